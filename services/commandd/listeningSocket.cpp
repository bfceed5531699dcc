#include "services/commandd/listeningSocket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <systemd/sd-daemon.h>

#include "base/systemWords.h"
#include "protocol/wire.h"

namespace kestrav {
namespace {

Problem cannot(const std::string& what) {
    return failed(what + ": " + systemWords(errno) + ".");
}

bool listensOnLoopback(int socket) {
    if (::sd_is_socket_inet(socket, AF_INET, SOCK_STREAM, 1, 0) <= 0) return false;
    sockaddr_in address{};
    socklen_t length = sizeof address;
    if (::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0) return false;
    return (ntohl(address.sin_addr.s_addr) >> 24U) == IN_LOOPBACKNET;
}

Outcome<UniqueFd> handedSocket(int count) {
    UniqueFd socket(SD_LISTEN_FDS_START);
    if (count != 1) return failed(std::to_string(count) + " sockets were handed over; this service takes one.");
    if (!listensOnLoopback(socket.get())) {
        return failed("the socket that was handed over does not listen for TCP on a loopback address.");
    }
    const int flags = ::fcntl(socket.get(), F_GETFL);
    if (flags < 0 || ::fcntl(socket.get(), F_SETFL, flags | O_NONBLOCK) != 0) return cannot("the socket handed over");
    return socket;
}

Outcome<UniqueFd> ownSocket() {
    UniqueFd socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket) return cannot("no socket can be made");
    const int yes = 1;  // connections of a service that has just ended don't keep the port from its successor
    ::setsockopt(socket.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(kServicePort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(socket.get(), SOMAXCONN) != 0) {
        if (errno != EADDRINUSE) return cannot(KESTRAV_SERVICE_PLACE " can't be listened on");
        return failed(KESTRAV_SERVICE_PLACE " is taken by another program. Is the service running already?");
    }
    return socket;
}

}  // namespace

Outcome<UniqueFd> listeningSocket() {
    const int count = ::sd_listen_fds(1);
    return count > 0 ? handedSocket(count) : ownSocket();
}

}  // namespace kestrav
