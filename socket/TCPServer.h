#pragma once

#include <optional>

#include "socket/Socket.h"
#include "socket/TCPClient.h"

namespace kestrav {

/// A listening TCP socket. It has no `close`: its descriptor stays open for as long as the process lives, unless the
/// caller closes `fd`.
class TCPServer : public Socket {
  public:
    using Socket::Socket;

    /// Listens on `address`, a dotted text, and `port`, and keeps the descriptor in `fd`.
    /// Throws SocketException, unknownError, when that is impossible.
    void listen();

    /// Waits without limit for a connection. Absent without `fd` and on failure. The client's `address` is the peer's
    /// dotted text; its `port` is the peer's, left in network byte order.
    std::optional<TCPClient> accept();
};

}  // namespace kestrav
