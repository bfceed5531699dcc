#pragma once

#include "device/MountedVolumes.h"

namespace kestrav {

/// What a test says is mounted; the volumes folders are /media and /run/media, as on the real system.
class FakeVolumes final : public MountedVolumes {
  public:
    std::optional<std::vector<std::string>> mounted = std::vector<std::string>{"/"};
    std::vector<MountedDevice> devices;

    std::optional<std::vector<std::string>> mountPoints() override { return mounted; }
    std::vector<MountedDevice> mountedDevices() override { return devices; }
    std::vector<std::string> volumesFolders() const override { return {"/media", "/run/media"}; }
};

}  // namespace kestrav
