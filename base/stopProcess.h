#pragma once

#include <cstdlib>

namespace kestrav {

/// Ends the process at once with SIGABRT, for programming errors and for the few conditions after which going on
/// could harm the accessory. Nothing is reported and nothing is unwound: the state can't be trusted any more.
[[noreturn]] inline void stopProcess() noexcept {
    std::abort();
}

/// Stops the process unless `condition` holds.
inline void require(bool condition) noexcept {
    if (!condition) stopProcess();
}

}  // namespace kestrav
