#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrav {

/// What the system itself uses of the block devices `numbers` or of files on them, in words: loop devices and swap
/// space, such as "loop7 (/media/me/STICK/system.img)". No process has such a file open. Empty when there is nothing.
std::vector<std::string> kernelUsersOf(const std::vector<dev_t>& numbers);

}  // namespace kestrav
