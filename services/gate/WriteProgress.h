#pragma once

#include <cstdint>

#include "protocol/board.h"

namespace kestrav {

/// Whom a write tells how far it is. Nothing here fails, and nothing holds the write up.
class WriteProgress {
  public:
    virtual ~WriteProgress() = default;

    /// A phase begins, in which `bytes` bytes are to be gone through; 0 where they can't be counted.
    virtual void enter(WritePhase phase, std::uint64_t bytes) = 0;
    /// So many of them are done.
    virtual void advance(std::uint64_t bytes) = 0;
};

}  // namespace kestrav
