#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrav {

/// Whether the path leads to one of the block devices, or to a file on one of them. No file system is asked anything,
/// so that one which doesn't answer can't hold this up.
bool leadsToDevice(const std::string& path, const std::vector<dev_t>& numbers);

}  // namespace kestrav
