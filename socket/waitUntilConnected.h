#pragma once

#include <cstdint>

namespace kestrav {

/// Waits until the connection attempt of `fd` has ended, well or badly; SO_ERROR knows which.
/// Returns 1 when it is ready, 0 when `seconds` have passed and -1 when waiting is impossible: a descriptor that isn't
/// open, or a negative time. A signal handler that runs meanwhile changes neither the result nor the moment of the
/// time-out. Any descriptor number will do, those beyond FD_SETSIZE too.
std::int32_t waitUntilConnected(std::int32_t fd, std::int32_t seconds);

}  // namespace kestrav
