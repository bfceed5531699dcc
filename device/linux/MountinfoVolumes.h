#pragma once

#include "device/MountedVolumes.h"

namespace kestrav {

/// This process's mounts, as the kernel lists them in /proc/self/mountinfo, by way of libmount: oldest first, hidden
/// and stacked ones included. Desktops mount removable disks in /run/media/USER/NAME or /media/USER/NAME, and
/// administrators in /media/NAME, so these two folders are the volumes folders.
class MountinfoVolumes final : public MountedVolumes {
  public:
    std::optional<std::vector<std::string>> mountPoints() override;
    std::vector<MountedDevice> mountedDevices() override;
    std::vector<std::string> volumesFolders() const override;
};

}  // namespace kestrav
