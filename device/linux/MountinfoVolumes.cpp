#include "device/linux/MountinfoVolumes.h"

#include <libmount.h>
#include <memory>

namespace kestrav {

namespace {

struct MountRelease {
    void operator()(libmnt_table* table) const { mnt_unref_table(table); }
    void operator()(libmnt_iter* iterator) const { mnt_free_iter(iterator); }
};

// Calls `take` for each mount, oldest first. False when the kernel doesn't say what is mounted.
template <typename Take>
bool forEachMount(Take take) {
    const std::unique_ptr<libmnt_table, MountRelease> table(mnt_new_table_from_file("/proc/self/mountinfo"));
    const std::unique_ptr<libmnt_iter, MountRelease> iterator(mnt_new_iter(MNT_ITER_FORWARD));
    if (!table || !iterator) return false;
    libmnt_fs* entry = nullptr;
    while (mnt_table_next_fs(table.get(), iterator.get(), &entry) == 0) {
        if (const char* target = mnt_fs_get_target(entry); target != nullptr) take(entry, target);
    }
    return true;
}

}  // namespace

std::optional<std::vector<std::string>> MountinfoVolumes::mountPoints() {
    std::vector<std::string> paths;
    if (!forEachMount([&](libmnt_fs*, const char* target) { paths.emplace_back(target); })) return std::nullopt;
    return paths;
}

std::vector<MountedDevice> MountinfoVolumes::mountedDevices() {
    std::vector<MountedDevice> devices;
    forEachMount([&](libmnt_fs* entry, const char* target) { devices.push_back({mnt_fs_get_devno(entry), target}); });
    return devices;
}

std::vector<std::string> MountinfoVolumes::volumesFolders() const {
    return {"/media", "/run/media"};
}

}  // namespace kestrav
