#pragma once

#include <cstdint>
#include <optional>
#include <sys/types.h>

namespace kestrav {

/// Who is at the other end of a loopback connection: the socket there, as the kernel knows it.
struct PeerIdentity {
    uid_t uid;            ///< who made the socket
    std::uint32_t inode;  ///< never 0

    friend bool operator==(const PeerIdentity&, const PeerIdentity&) = default;
};

/// Asks the kernel (sock_diag(7)) for exactly the socket at the other end of `connection`, an IPv4 TCP connection
/// within this machine. Nothing when the peer has closed it: a socket that belongs to no process any more shows user 0
/// and inode 0, and is not root's. Nothing either when the kernel doesn't answer.
std::optional<PeerIdentity> peerIdentity(int connection);

}  // namespace kestrav
