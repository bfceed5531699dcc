#pragma once

#include <string>
#include <string_view>

namespace kestrav {

/// The device nodes of the disk `bsdName`, formed by plain concatenation: what the name holds is neither checked nor
/// escaped. Reads and the service's copies go to the raw node, direct writes to the block node.
struct DiskNodes {
    /// Forms all three.
    explicit DiskNodes(std::string_view bsdName);

    std::string rawDisk;         ///< "/dev/r" + name
    std::string blockDisk;       ///< "/dev/" + name
    std::string firstPartition;  ///< "/dev/" + name + "s1"
};

}  // namespace kestrav
