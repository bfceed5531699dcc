#include "services/disk/MountTable.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <sys/stat.h>

#include "base/systemWords.h"
#include "base/wholeFile.h"
#include "services/disk/MountinfoLine.h"

namespace kestrav {
namespace {

constexpr std::size_t kLongestTable = std::size_t{64} << 20U;

/// btrfs may span disks and so shows a device number of its own; it is recognised by the node that it was mounted from.
/// No other file system is: a source is only text, which a user's own file system fills in as it likes.
bool isNumberlessOn(const MountinfoLine& mount, dev_t number) {
    struct stat status {};
    return mount.type == "btrfs" && ::stat(mount.source.c_str(), &status) == 0 && S_ISBLK(status.st_mode) &&
           status.st_rdev == number;
}

}  // namespace

Outcome<std::vector<MountedPlace>> MountinfoTable::placesOf(dev_t number) const {
    const auto unreadable = [](int error) {
        return refused("the system does not tell what is mounted: " + systemWords(error) + ".");
    };
    const auto table = readWholeFile("/proc/self/mountinfo", kLongestTable);
    if (!table) return unreadable(table.problem().cause.value());
    // Whoever asks has a place in the table itself: an empty one is no table.
    if (table.value().empty()) return unreadable(ENODATA);
    std::vector<MountedPlace> places;
    std::string_view left = table.value();
    while (!left.empty()) {
        const std::string_view line = left.substr(0, left.find('\n'));
        left.remove_prefix(std::min(line.size() + 1, left.size()));
        const auto mount = MountinfoLine::parse(line);
        // What can't be told apart may be a mount of the disk.
        if (!mount) return unreadable(EBADMSG);
        const bool numbered = mount->device == number;
        if (numbered || isNumberlessOn(*mount, number)) places.push_back({mount->place, !numbered});
    }
    std::ranges::reverse(places);
    return places;
}

}  // namespace kestrav
