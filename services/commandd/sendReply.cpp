#include "services/commandd/sendReply.h"

#include <array>
#include <cerrno>
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

}  // namespace kestrav
