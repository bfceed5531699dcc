#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "socket/Socket.h"

namespace kestrav {

/// Sends datagrams to one endpoint. Lengths that don't fit 32 bits stop the process.
class UDPClient : public Socket {
  public:
    /// Looks `host` up, which may block, and opens the socket: `address` is then the dotted address found, not the
    /// name given. If the lookup fails, `address` is empty, `port` 0 and `fd` absent.
    UDPClient(const std::string& host, std::int32_t hostPort);

    /// Sends bytes, or a text up to its first NUL, as one datagram. Throws SocketException: connectionClosed without
    /// `fd`, unknownError if not all of it could be sent.
    void send(std::span<const std::byte> bytes);
    void send(std::string_view text);

    /// Allows broadcast addresses. Does nothing without `fd`.
    void enableBroadcast();

    /// Closes `fd` if there is one. Closing twice is harmless.
    void close();
};

}  // namespace kestrav
