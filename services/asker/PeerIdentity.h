#pragma once

#include "base/Outcome.h"
#include "base/findTcpSocket.h"

namespace kestrav {

/// Who is at the other end of a loopback connection: the socket there.
using PeerIdentity = TcpSocket;

/// Finds exactly the socket at the other end of `connection`, an IPv4 TCP connection within this machine. Refused when
/// the peer has closed it: a socket that belongs to no process any more shows user 0, and is not root's. Refused, in
/// other words, when the system tells nothing.
Outcome<PeerIdentity> peerIdentity(int connection);

}  // namespace kestrav
