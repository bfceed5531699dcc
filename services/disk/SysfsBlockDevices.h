#pragma once

#include "services/disk/BlockDevices.h"

namespace kestrav {

/// The register as the kernel itself shows it in /sys. Every call asks anew, so nothing goes stale. Without a mounted
/// sysfs there are no devices.
class SysfsBlockDevices final : public BlockDevices {
  public:
    Outcome<BlockDevice> find(dev_t number) const override;
    Outcome<std::vector<dev_t>> diskAndPartitions(dev_t disk) const override;
    std::vector<std::string> builtOnTopOf(dev_t disk) const override;
};

}  // namespace kestrav
