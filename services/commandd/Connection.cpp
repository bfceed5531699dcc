#include "services/commandd/Connection.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <poll.h>
#include <sys/socket.h>

namespace kestrav {

void sendReply(int connection, std::string_view reply) {
    ::send(connection, reply.data(), reply.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    ::shutdown(connection, SHUT_WR);
}

bool drain(int connection) {
    std::array<char, 65536> scratch;  // NOLINT: overwritten before anything looks at it, and nothing does
    const ssize_t got = ::recv(connection, scratch.data(), scratch.size(), MSG_DONTWAIT);
    return got > 0 || (got < 0 && (errno == EAGAIN || errno == EINTR));
}

void drainUntilClosed(int connection) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::seconds(2);
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd waiting{connection, POLLIN, 0};
        if (left <= 0 || ::poll(&waiting, 1, static_cast<int>(left)) <= 0) return;
        if (!drain(connection)) return;
    }
}

}  // namespace kestrav
