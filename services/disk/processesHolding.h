#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrav {

/// Who uses the block devices `numbers`, in words: processes that have one of them or a file of their file systems
/// open, stand in such a folder, run or map such a file, or see one mounted. For example "nautilus (4711) and
/// 2 others"; empty when nobody can be named. Looks through /proc, and asks no file system anything, so that one which
/// doesn't answer can't hold the search up.
std::string processesHolding(const std::vector<dev_t>& numbers);

}  // namespace kestrav
