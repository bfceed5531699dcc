#include "services/disk/MountTable.h"

#include <cerrno>
#include <libmount/libmount.h>
#include <memory>
#include <string_view>
#include <sys/stat.h>

#include "base/systemWords.h"

namespace kestrav {
namespace {

struct MountRelease {
    void operator()(libmnt_table* table) const noexcept { ::mnt_unref_table(table); }
    void operator()(libmnt_iter* place) const noexcept { ::mnt_free_iter(place); }
};

/// btrfs may span disks and so shows a device number of its own; it is recognised by the node that it was mounted from.
/// No other file system is: a source is only text, which a user's own file system fills in as it likes.
bool isNumberlessOn(libmnt_fs* entry, dev_t number) {
    const char* type = ::mnt_fs_get_fstype(entry);
    const char* source = ::mnt_fs_get_source(entry);
    if (type == nullptr || source == nullptr || std::string_view(type) != "btrfs") return false;
    struct stat status {};
    return ::stat(source, &status) == 0 && S_ISBLK(status.st_mode) && status.st_rdev == number;
}

}  // namespace

Outcome<std::vector<MountedPlace>> MountinfoTable::placesOf(dev_t number) const {
    const auto unreadable = [](int error) {
        return refused("the system does not tell what is mounted: " + systemWords(error) + ".");
    };
    std::vector<MountedPlace> places;
    errno = ENOMEM;
    const std::unique_ptr<libmnt_table, MountRelease> table(::mnt_new_table_from_file("/proc/self/mountinfo"));
    if (!table) return unreadable(errno);
    const std::unique_ptr<libmnt_iter, MountRelease> at(::mnt_new_iter(MNT_ITER_BACKWARD));
    // Whoever asks has a place in the table itself: an empty one is no table.
    if (!at || ::mnt_table_is_empty(table.get()) != 0) return unreadable(at ? ENODATA : ENOMEM);
    libmnt_fs* entry = nullptr;
    while (::mnt_table_next_fs(table.get(), at.get(), &entry) == 0) {
        const char* target = ::mnt_fs_get_target(entry);
        if (target == nullptr) continue;
        const bool numbered = ::mnt_fs_get_devno(entry) == number;
        if (numbered || isNumberlessOn(entry, number)) places.push_back({target, !numbered});
    }
    return places;
}

}  // namespace kestrav
