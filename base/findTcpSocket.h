#pragma once

#include <cstdint>
#include <netinet/in.h>
#include <optional>
#include <sys/types.h>

namespace kestrav {

/// A TCP socket of this computer that some process has open, as the kernel knows it.
struct TcpSocket {
    uid_t uid;            ///< who made it
    std::uint32_t inode;  ///< never 0

    /// Whether both are the same socket.
    friend bool operator==(const TcpSocket&, const TcpSocket&) = default;
};

/// What came of looking for a socket.
struct SocketLook {
    bool answered = false;            ///< whether the system tells about sockets at all
    std::optional<TcpSocket> socket;  ///< none when there is none, or no process has it open any more
};

/// Finds exactly the IPv4 socket with these two ends that is connected, or has only ended its sending: by sock_diag(7),
/// or in /proc/net/tcp where the kernel lacks that (its module tcp_diag may be missing). Any user may ask.
SocketLook findConnectedSocket(const sockaddr_in& local, const sockaddr_in& remote);

/// Finds in the same way the socket that takes new connections to `local`. /proc/net/tcp shows only those of IPv4.
SocketLook findListeningSocket(const sockaddr_in& local);

/// The two ends of a connected IPv4 socket. False when it has none.
bool endsOf(int connection, sockaddr_in& local, sockaddr_in& remote);

}  // namespace kestrav
