#include "services/disk/mountsBelow.h"

#include <algorithm>
#include <string_view>

#include "services/disk/MountinfoLine.h"
#include "services/disk/forEachLine.h"

namespace kestrav {
namespace {

constexpr std::size_t kMost = 3;

std::vector<std::uint64_t> mountsAt(const std::string& place, const std::vector<dev_t>& numbers) {
    std::vector<std::uint64_t> ids;
    forEachLine("/proc/self/mountinfo", [&](std::string_view line) {
        const auto mount = MountinfoLine::parse(line);
        const bool isIt = mount && mount->place == place && std::ranges::find(numbers, mount->device) != numbers.end();
        if (isIt) ids.push_back(mount->id);
        return true;
    });
    return ids;
}

}  // namespace

std::vector<std::string> mountsBelow(const std::string& place, const std::vector<dev_t>& numbers) {
    const auto ids = mountsAt(place, numbers);
    std::vector<std::string> below;
    forEachLine("/proc/self/mountinfo", [&](std::string_view line) {
        const auto mount = MountinfoLine::parse(line);
        if (mount && std::ranges::find(ids, mount->parent) != ids.end()) below.push_back(mount->place);
        return below.size() < kMost;
    });
    return below;
}

}  // namespace kestrav
