#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "base/Outcome.h"
#include "services/disk/MountTable.h"

namespace kestrav {

/// Unmounts everything that is mounted of the block devices `numbers` and returns from where, nothing when nothing
/// was. Fails when a place stays mounted, and says who holds it. `name` is the device's name for the sentences.
Outcome<std::vector<std::string>> unmountAll(const MountTable& mounts, const std::vector<dev_t>& numbers,
                                             const std::string& name);

}  // namespace kestrav
