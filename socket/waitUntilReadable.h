#pragma once

#include <cstdint>

namespace kestrav {

/// Waits until a read from `fd` would not block: data, end of stream or an error.
/// Returns 1 when it is ready, 0 when `seconds` have passed and -1 when waiting is impossible: a descriptor that isn't
/// open, or a negative time. A signal handler that runs meanwhile changes neither the result nor the moment of the
/// time-out. Any descriptor number will do, those beyond FD_SETSIZE too.
std::int32_t waitUntilReadable(std::int32_t fd, std::int32_t seconds);

}  // namespace kestrav
