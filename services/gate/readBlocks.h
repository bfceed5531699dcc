#pragma once

#include <cstdint>
#include <string>

#include "base/Outcome.h"
#include "services/disk/DiskBytes.h"

namespace kestrav {

/// The most blocks whose bytes fit into one reply.
inline constexpr std::uint64_t kMostBlocksRead = 19;

/// The bytes of `count` blocks of 512 bytes from `firstBlock` on. Refused are no blocks, more than `mostBlocksRead`,
/// and blocks past the end of the disk. `diskName` is for the sentences.
Outcome<std::string> readBlocks(DiskBytes& disk, std::uint64_t firstBlock, std::uint64_t count,
                                const std::string& diskName);

}  // namespace kestrav
