#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "socket/Socket.h"

namespace kestrav {

/// Receives datagrams. It has no `close`: its descriptor stays open for as long as the process lives, unless the
/// caller closes `fd`.
class UDPServer : public Socket {
  public:
    /// One datagram and its sender.
    struct Datagram {
        std::optional<std::vector<std::byte>> bytes;  ///< absent when nothing, or an empty datagram, was received
        std::string address;                          ///< the sender's dotted text; "no ip" without a socket
        std::int32_t port;                            ///< the sender's port, left in network byte order
    };

    /// Binds as udp_server_bind does. Never fails: if binding is impossible, `fd` is absent.
    UDPServer(std::string endpointAddress, std::int32_t endpointPort);

    /// Waits without limit for a datagram and takes at most `length` bytes of it. Without `fd` returns at once.
    /// A length that is negative or doesn't fit 32 bits stops the process.
    Datagram receive(std::int64_t length);
};

}  // namespace kestrav
