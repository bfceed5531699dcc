#pragma once

#include <cstdint>
#include <string>

#include "base/Outcome.h"
#include "protocol/wire.h"
#include "services/disk/DiskBytes.h"

namespace kestrav {

/// The bytes of `count` blocks of 512 bytes from `firstBlock` on. Refused are no blocks, more than `kMostBlocksRead`,
/// and blocks past the end of the disk. `diskName` is for the sentences.
Outcome<std::string> readBlocks(DiskBytes& disk, std::uint64_t firstBlock, std::uint64_t count,
                                const std::string& diskName);

}  // namespace kestrav
