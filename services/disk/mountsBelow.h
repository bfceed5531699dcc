#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrav {

/// Where other file systems are mounted upon the one that is mounted at `place` from one of the devices `numbers`: they
/// keep it from being unmounted. At most three.
std::vector<std::string> mountsBelow(const std::string& place, const std::vector<dev_t>& numbers);

}  // namespace kestrav
