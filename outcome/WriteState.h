#pragma once

#include <cstdint>
#include <string>

#include "protocol/board.h"

namespace kestrav {

/// How far a write has come that is under way.
struct WriteState {
    std::string disk;
    WritePhase phase = WritePhase::asking;
    std::uint64_t done = 0;          ///< bytes of this phase
    std::uint64_t of = 0;            ///< bytes that it has; 0 where they aren't counted
    std::uint64_t bytesASecond = 0;  ///< in this phase; 0 where that isn't known yet

    bool operator==(const WriteState&) const = default;
};

}  // namespace kestrav
