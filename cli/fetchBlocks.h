#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "base/Outcome.h"
#include "cli/CommandParts.h"
#include "cli/UpdateResult.h"

namespace kestrav {

/// Takes bytes that were read, in order; a problem ends the reading.
using BlockSink = std::function<Outcome<void>(std::span<const std::byte>)>;

/// Has the command service read `count` blocks from `firstBlock` on, in as many requests as it takes, and hands over
/// the first `bytes` bytes of them; success has no sentence yet. An answer that came only in part is asked for again.
UpdateResult fetchBlocks(std::int64_t firstBlock, std::int64_t bytes, const CommandParts& parts, const BlockSink& sink);

}  // namespace kestrav
