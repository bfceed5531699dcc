#pragma once

#include <optional>
#include <string>
#include <vector>

namespace kestrav {

/// What is mounted on this machine, asked afresh each time.
class MountedVolumes {
  public:
    virtual ~MountedVolumes() = default;

    /// The paths where volumes are mounted, all of them, in the system's order; absent when the system doesn't say.
    virtual std::optional<std::vector<std::string>> mountPoints() = 0;

    /// The folders in which the desktop mounts the volumes of removable disks: absolute, without a trailing slash.
    virtual std::vector<std::string> volumesFolders() const = 0;
};

}  // namespace kestrav
