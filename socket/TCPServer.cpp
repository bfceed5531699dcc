#include "socket/TCPServer.h"

#include "socket/AddressText.h"
#include "socket/SocketError.h"
#include "socket/tcp.h"

namespace kestrav {

void TCPServer::listen() {
    const std::int32_t result = tcp_listen(address.c_str(), port);
    // frozen: F16
    if (result < 1) throw SocketException(SocketError::unknownError);
    fd = result;
}

std::optional<TCPClient> TCPServer::accept() {
    if (!fd) return std::nullopt;
    AddressText peer;
    std::int32_t peerPort = 0;
    const std::int32_t accepted = tcp_accept(*fd, peer.data(), &peerPort);
    if (accepted < 0) return std::nullopt;
    std::optional<TCPClient> client(std::in_place, peer.dotted(), peerPort);
    client->fd = accepted;
    return client;
}

}  // namespace kestrav
