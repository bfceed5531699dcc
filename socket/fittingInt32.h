#pragma once

#include <cstdint>
#include <limits>

#include "base/stopProcess.h"

namespace kestrav {

/// A size or time for the functions with 32-bit arguments. One that doesn't fit is a programming error.
// frozen: F58
inline std::int32_t fittingInt32(std::int64_t value) noexcept {
    require(value >= std::numeric_limits<std::int32_t>::min() && value <= std::numeric_limits<std::int32_t>::max());
    return static_cast<std::int32_t>(value);
}

/// The same for a length, which is never negative.
inline std::int32_t fittingLength(std::int64_t value) noexcept {
    require(value >= 0);
    return fittingInt32(value);
}

}  // namespace kestrav
