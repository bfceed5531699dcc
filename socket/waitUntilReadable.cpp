#include "socket/waitUntilReadable.h"

#include "socket/pollUntil.h"

namespace kestrav {

std::int32_t waitUntilReadable(std::int32_t fd, std::int32_t seconds) {
    if (!canBeWaitedFor(fd, seconds)) return -1;
    pollfd entry{.fd = fd, .events = POLLIN | POLLRDNORM | POLLRDBAND, .revents = 0};
    return pollUntil(entry, PollClock::now() + std::chrono::seconds(seconds));
}

}  // namespace kestrav
