#pragma once

#include <memory>

#include "base/Outcome.h"
#include "services/disk/AccessoryNode.h"
#include "services/disk/DiskBytes.h"

namespace kestrav {

enum class DiskUse {
    read,   ///< beside other readers
    write,  ///< alone: no other program has the disk or a partition of it in exclusive use, mounted file systems
            ///< included
};

/// Opens the accessory's disk and judges what was opened once more: a disk that was put in the judged one's place
/// meanwhile is refused. Waits up to two seconds for a disk that is in use.
///
/// While it is open the disk is locked with flock(2), exclusively for writing. udev keeps its hands off a locked disk,
/// and so do two services of this project, also where the kernel knows no exclusive opening. The lock ends with the
/// process, however that ends.
Outcome<std::unique_ptr<DiskBytes>> openDisk(const BlockDevices& devices, const AccessoryNode& disk, DiskUse use);

}  // namespace kestrav
