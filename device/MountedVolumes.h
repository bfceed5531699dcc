#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kestrav {

/// A device that is mounted, and where. One that is mounted at two places is there twice.
struct MountedDevice {
    std::uint64_t number = 0;  ///< the system's number of the device
    std::string path;          ///< the mount point
};

/// What is mounted on this machine, asked afresh each time.
class MountedVolumes {
  public:
    virtual ~MountedVolumes() = default;

    /// The paths where volumes are mounted, all of them, in the system's order; absent when the system doesn't say.
    virtual std::optional<std::vector<std::string>> mountPoints() = 0;

    /// The devices that are mounted, in the system's order; none as well when the system doesn't say.
    virtual std::vector<MountedDevice> mountedDevices() = 0;

    /// The folders in which the desktop mounts the volumes of removable disks: absolute, without a trailing slash.
    virtual std::vector<std::string> volumesFolders() const = 0;
};

}  // namespace kestrav
