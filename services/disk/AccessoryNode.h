#pragma once

#include <string>

#include "base/Outcome.h"
#include "services/disk/BlockDevices.h"

namespace kestrav {

/// A device node of the accessory, found and judged once.
struct AccessoryNode {
    std::string path;  ///< the node itself, for example "/dev/sdb"; no symbolic link any more
    BlockDevice device;
};

/// Finds the accessory's whole disk by its alias ("/dev/rsdb" for "sdb"). Refused when the alias leads to anything but
/// a whole disk of that name that belongs to the accessory.
Outcome<AccessoryNode> findDisk(const BlockDevices& devices, const std::string& alias, const std::string& diskName);

/// Finds the accessory's first partition by its alias ("/dev/sdbs1" for "sdb"), as strictly.
Outcome<AccessoryNode> findFirstPartition(const BlockDevices& devices, const std::string& alias,
                                          const std::string& diskName);

}  // namespace kestrav
