#pragma once

#include <chrono>
#include <cstdint>
#include <poll.h>

namespace kestrav {

/// What time is told by: it never jumps.
using PollClock = std::chrono::steady_clock;

/// Whether poll(2) can wait for it: the call skips a negative descriptor and takes a negative time as "for ever", where
/// waiting has to fail.
inline bool canBeWaitedFor(std::int32_t fd, std::int32_t seconds) {
    return fd >= 0 && seconds >= 0;
}

/// Waits until one of the entry's events has happened or the deadline has come, signal handlers notwithstanding.
/// Returns 1 for an event, 0 at the deadline and -1 for a descriptor that isn't open.
std::int32_t pollUntil(pollfd& entry, PollClock::time_point deadline);

}  // namespace kestrav
