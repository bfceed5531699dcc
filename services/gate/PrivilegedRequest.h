#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "base/Outcome.h"

namespace kestrav {

/// `umount /dev/<disk>s1`: the accessory's first partition shall not be mounted any more.
struct UnmountRequest {
    std::string diskName;  ///< for example "sdb"
    std::string node;      ///< "/dev/sdbs1"
};

/// `dd if=FILE of=/dev/r<disk> seek=N bs=512`: the whole file goes onto the disk from block N on.
struct WriteRequest {
    std::string imagePath;  ///< absolute
    std::string diskName;
    std::string node;          ///< "/dev/rsdb"
    std::uint64_t firstBlock;  ///< in 512-byte blocks from the start of the whole disk; below 2^63
};

/// `dd if=/dev/r<disk> skip=N count=M`: M blocks of 512 bytes, from block N on, shall be read.
struct ReadRequest {
    std::string diskName;
    std::string node;
    std::uint64_t firstBlock;
    std::uint64_t count;
};

using PrivilegedRequest = std::variant<UnmountRequest, WriteRequest, ReadRequest>;

/// Takes a command line apart. Only the three shapes above pass, their arguments complete and in this order, numbers
/// in plain decimal; everything else is refused in words. Nothing is looked up: neither the node nor the file needs to
/// exist.
Outcome<PrivilegedRequest> parsePrivilegedRequest(std::string_view command, std::span<const std::string> arguments);

}  // namespace kestrav
