#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "socket/Socket.h"

namespace kestrav {

/// One end of a TCP connection. Every operation blocks its caller. Sizes and times that don't fit 32 bits, and
/// negative lengths, stop the process.
class TCPClient : public Socket {
  public:
    using Socket::Socket;

    /// Connects within `timeout` seconds and keeps the descriptor in `fd`. Throws SocketException.
    void connect(std::int64_t timeout);

    /// Sends a text, up to its first NUL if it has one, or bytes; nothing is added. Throws SocketException:
    /// connectionClosed without `fd`, unknownError if not all of it could be sent.
    void send(std::string_view text);
    void send(std::span<const std::byte> bytes);

    /// Reads once, at most `length` bytes, waiting `timeout` seconds (0 or less: without limit) for the first one.
    /// Absent without `fd`, on time-out, on failure, and when the peer has closed.
    std::optional<std::vector<std::byte>> read(std::int64_t length, std::int64_t timeout);

    /// Closes `fd` if there is one. Closing twice is harmless.
    void close();
};

}  // namespace kestrav
