#include "socket/udp.h"

#include <netinet/in.h>
#include <optional>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

#include "base/retry.h"
#include "socket/firstAddressOf.h"
#include "socket/ipv4Endpoint.h"
#include "socket/switchOn.h"

namespace kestrav {
namespace {

bool meansAnyInterface(const char* address) {
    return address == nullptr || *address == '\0' || std::string_view(address) == "255.255.255.255";
}

}  // namespace

std::int32_t udp_server_bind(const char* address, std::int32_t port) {
    const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const bool anyInterface = meansAnyInterface(address);
    if (switchOn(fd, anyInterface ? SO_BROADCAST : SO_REUSEADDR) == -1) return -1;
    // A named address is deliberately not honoured: the whole structure, its family too, is zero when it is bound.
    // Linux takes a zero family with a zero address for IPv4.
    // frozen: F49
    const sockaddr_in here = anyInterface ? ipv4Endpoint(in_addr{INADDR_ANY}, port) : sockaddr_in{};
    // frozen: F50
    return ::bind(fd, reinterpret_cast<const sockaddr*>(&here), sizeof here) == 0 ? fd : -1;
}

std::int32_t udp_receive_from(std::int32_t fd, void* buffer, std::int32_t length, char* peerAddress,
                              std::int32_t* peerPort) {
    sockaddr_in peer{};
    socklen_t peerLength = sizeof peer;
    ssize_t received = -1;
    if (length >= 0) {
        received = retry([&] {
            return ::recvfrom(fd, buffer, static_cast<std::size_t>(length), 0, reinterpret_cast<sockaddr*>(&peer),
                              &peerLength);
        });
    }
    copyAddressText(peer.sin_addr, peerAddress);
    // frozen: F46, F48
    *peerPort = peer.sin_port;
    return static_cast<std::int32_t>(received);
}

std::int32_t udp_client_open() {
    const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    (void)switchOn(fd, SO_REUSEADDR);
    return fd;
}

std::int32_t udp_enable_broadcast(std::int32_t fd) {
    return switchOn(fd, SO_BROADCAST);
}

std::int32_t udp_resolve_host(const char* host, char* address) {
    const std::optional<in_addr> found = firstAddressOf(host);
    if (!found) return -1;
    copyAddressText(*found, address);
    return 0;
}

std::int32_t udp_send_to(std::int32_t fd, const void* buffer, std::int32_t length, const char* address,
                         std::int32_t port) {
    if (length < 0) return -1;
    const sockaddr_in peer = ipv4Endpoint(addressFromText(address), port);
    const ssize_t sent = retry([&] {
        return ::sendto(fd, buffer, static_cast<std::size_t>(length), 0, reinterpret_cast<const sockaddr*>(&peer),
                        sizeof peer);
    });
    return static_cast<std::int32_t>(sent);
}

std::int32_t udp_close(std::int32_t fd) {
    return ::close(fd);
}

}  // namespace kestrav
