#include "socket/waiting.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <poll.h>

namespace kestrav {
namespace {

using Clock = std::chrono::steady_clock;

timespec timeLeft(Clock::time_point deadline) {
    const Clock::duration left = std::max(deadline - Clock::now(), Clock::duration::zero());
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
    return {seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
}

// poll rather than select, whose descriptor sets end at 1024. A closed descriptor is an error of the whole call
// to select and a mere event to poll.
std::int32_t pollUntil(pollfd& entry, Clock::time_point deadline) {
    for (;;) {
        const timespec left = timeLeft(deadline);
        const int ready = ::ppoll(&entry, 1, &left, nullptr);
        if (ready < 0 && errno == EINTR) continue;
        return ready > 0 && (entry.revents & POLLNVAL) != 0 ? -1 : ready;
    }
}

// poll skips a negative descriptor and takes a negative time as "for ever"; select fails on both.
bool canWait(std::int32_t fd, std::int32_t seconds) {
    return fd >= 0 && seconds >= 0;
}

}  // namespace

std::int32_t waitUntilReadable(std::int32_t fd, std::int32_t seconds) {
    if (!canWait(fd, seconds)) return -1;
    pollfd entry{.fd = fd, .events = POLLIN | POLLRDNORM | POLLRDBAND, .revents = 0};
    return pollUntil(entry, Clock::now() + std::chrono::seconds(seconds));
}

std::int32_t waitUntilConnected(std::int32_t fd, std::int32_t seconds) {
    if (!canWait(fd, seconds)) return -1;
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(seconds);
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
