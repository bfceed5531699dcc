#include "socket/waitUntilConnected.h"

#include "socket/pollUntil.h"

namespace kestrav {

std::int32_t waitUntilConnected(std::int32_t fd, std::int32_t seconds) {
    if (!canBeWaitedFor(fd, seconds)) return -1;
    const PollClock::time_point deadline = PollClock::now() + std::chrono::seconds(seconds);
    pollfd entry{.fd = fd, .events = POLLOUT | POLLWRNORM | POLLWRBAND, .revents = 0};
    const std::int32_t ready = pollUntil(entry, deadline);
    // An attempt that could not even start (no route, say) leaves a socket that Linux calls writable, hung up and
    // free of errors: it would pass for a connection. It is none and never becomes one, so the time runs out.
    const bool neverStarted = ready > 0 && (entry.revents & (POLLHUP | POLLERR)) == POLLHUP;
    if (!neverStarted) return ready;
    entry.fd = -1;
    return pollUntil(entry, deadline);
}

}  // namespace kestrav
