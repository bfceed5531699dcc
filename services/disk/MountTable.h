#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "base/Outcome.h"

namespace kestrav {

struct MountedPlace {
    std::string path;
    /// The file system shows a device number of its own instead of the block device's, as btrfs does.
    bool numberless = false;
};

/// Where the system has file systems mounted.
class MountTable {
  public:
    virtual ~MountTable() = default;

    /// The mount points of the file systems on the block device `number`, the latest mounted first. Refused when that
    /// can't be told.
    virtual Outcome<std::vector<MountedPlace>> placesOf(dev_t number) const = 0;
};

/// The real one: /proc/self/mountinfo, read anew for every question.
class MountinfoTable final : public MountTable {
  public:
    Outcome<std::vector<MountedPlace>> placesOf(dev_t number) const override;
};

}  // namespace kestrav
