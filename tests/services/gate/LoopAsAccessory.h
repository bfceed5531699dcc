#pragma once

#include <string>
#include <vector>

#include "services/disk/SysfsBlockDevices.h"
#include "tests/services/LoopDisk.h"

namespace kestrav {

/// The machine's own devices, of which one loop disk passes for the accessory.
class LoopAsAccessory final : public BlockDevices {
  public:
    explicit LoopAsAccessory(const LoopDisk& disk) : disk_(disk) {}

    Outcome<BlockDevice> find(dev_t number) const override {
        auto device = devices_.find(number);
        if (device) device.value().accessory = device.value().diskName == disk_.name();
        return device;
    }
    Outcome<std::vector<dev_t>> diskAndPartitions(dev_t disk) const override {
        return devices_.diskAndPartitions(disk);
    }
    std::vector<std::string> builtOnTopOf(dev_t disk) const override { return devices_.builtOnTopOf(disk); }

  private:
    const LoopDisk& disk_;
    SysfsBlockDevices devices_;
};

}  // namespace kestrav
