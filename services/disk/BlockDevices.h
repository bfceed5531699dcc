#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "base/Outcome.h"

namespace kestrav {

/// What the system knows of one block device.
struct BlockDevice {
    enum class Kind {
        disk,
        partition,
    };
    Kind kind;
    dev_t number;
    std::string name;               ///< the kernel's, for example "sdb" or "sdb1"
    std::string diskName;           ///< name of the disk that it is, or is a part of
    std::uint64_t partitionNumber;  ///< 1 for the first; 0 for a disk
    bool accessory;                 ///< its nearest USB device is the accessory, 10d6:fd01
    bool writeProtected;            ///< by its switch, or by the kernel after an error
    std::uint64_t bytes;
    std::uint32_t logicalBlockSize;             ///< bytes; what the disk reads and writes at least
    std::optional<std::uint64_t> diskSequence;  ///< differs for every disk since boot; older kernels don't tell
};

/// The system's register of block devices.
class BlockDevices {
  public:
    virtual ~BlockDevices() = default;

    /// The device with this number as it is now. Refused when there is none, when it makes no sense, and when the
    /// system lacks what it takes to look at it.
    virtual Outcome<BlockDevice> find(dev_t number) const = 0;

    /// The disk with this number, and its partitions. Refused when they can't all be told.
    virtual Outcome<std::vector<dev_t>> diskAndPartitions(dev_t disk) const = 0;

    /// Names of devices that the system built on top of the disk or of one of its partitions (encryption, volumes),
    /// as people know them.
    virtual std::vector<std::string> builtOnTopOf(dev_t disk) const = 0;
};

}  // namespace kestrav
