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
    ///
    /// No name is looked up: a text that is not dotted means 255.255.255.255, and Linux lets that be listened on.
    /// `TCPServer("localhost", 9090).listen()` succeeds, and nobody can ever connect to it. Give "127.0.0.1", or
    /// "0.0.0.0" for every interface.
    void listen();

    /// Waits without limit for a connection. Absent without `fd` and on failure. The client's `address` is the peer's
    /// dotted text; its `port` is the peer's, left in network byte order.
    std::optional<TCPClient> accept();
};

}  // namespace kestrav
