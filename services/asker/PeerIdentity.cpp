#include "services/asker/PeerIdentity.h"

#include <netinet/in.h>
#include <poll.h>

namespace kestrav {
namespace {

bool isBroken(int connection) {
    pollfd waiting{connection, 0, 0};
    return ::poll(&waiting, 1, 0) != 0;
}

}  // namespace

Outcome<PeerIdentity> peerIdentity(int connection) {
    sockaddr_in ours{};
    sockaddr_in peers{};
    // Looking a broken one up may take long, where there are many connections, and tells nothing.
    if (!endsOf(connection, ours, peers) || isBroken(connection))
        return refused("the other end of the connection is gone.");
    const SocketLook look = findConnectedSocket(peers, ours);
    if (look.socket) return *look.socket;
    if (look.answered) return refused("the other end of the connection is gone.");
    return refused("the system does not tell who is asking: neither sock_diag nor /proc/net/tcp can be read.");
}

}  // namespace kestrav
