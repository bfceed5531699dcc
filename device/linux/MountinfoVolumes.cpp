#include "device/linux/MountinfoVolumes.h"

#include <libmount.h>
#include <memory>

namespace kestrav {

namespace {

struct MountRelease {
    void operator()(libmnt_table* table) const { mnt_unref_table(table); }
    void operator()(libmnt_iter* iterator) const { mnt_free_iter(iterator); }
};

}  // namespace

std::optional<std::vector<std::string>> MountinfoVolumes::mountPoints() {
    const std::unique_ptr<libmnt_table, MountRelease> table(mnt_new_table_from_file("/proc/self/mountinfo"));
    const std::unique_ptr<libmnt_iter, MountRelease> iterator(mnt_new_iter(MNT_ITER_FORWARD));
    if (!table || !iterator) return std::nullopt;
    std::vector<std::string> paths;
    libmnt_fs* entry = nullptr;
    while (mnt_table_next_fs(table.get(), iterator.get(), &entry) == 0) {
        if (const char* target = mnt_fs_get_target(entry); target != nullptr) paths.emplace_back(target);
    }
    return paths;
}

std::vector<std::string> MountinfoVolumes::volumesFolders() const {
    return {"/media", "/run/media"};
}

}  // namespace kestrav
