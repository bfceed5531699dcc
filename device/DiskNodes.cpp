#include "device/DiskNodes.h"

namespace kestrav {

// frozen: F25
DiskNodes::DiskNodes(std::string_view bsdName) : rawDisk("/dev/r"), blockDisk("/dev/"), firstPartition("/dev/") {
    rawDisk += bsdName;
    blockDisk += bsdName;
    firstPartition.append(bsdName).append("s1");
}

}  // namespace kestrav
