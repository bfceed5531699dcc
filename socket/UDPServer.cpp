#include "socket/UDPServer.h"

#include "socket/AddressText.h"
#include "socket/fittingInt32.h"
#include "socket/udp.h"

namespace kestrav {

UDPServer::UDPServer(std::string endpointAddress, std::int32_t endpointPort)
    : Socket(std::move(endpointAddress), endpointPort) {
    const std::int32_t bound = udp_server_bind(address.c_str(), port);
    // frozen: F16
    if (bound > 0) fd = bound;
}

UDPServer::Datagram UDPServer::receive(std::int64_t length) {
    // frozen: F55
    if (!fd) return {std::nullopt, "no ip", 0};
    const std::int32_t most = fittingLength(length);
    std::vector<std::byte> buffer(static_cast<std::size_t>(most));
    AddressText peer;
    std::int32_t peerPort = 0;
    const std::int32_t count = udp_receive_from(*fd, buffer.data(), most, peer.data(), &peerPort);
    if (count < 1) return {std::nullopt, peer.dotted(), peerPort};
    buffer.resize(static_cast<std::size_t>(count));
    return {std::move(buffer), peer.dotted(), peerPort};
}

}  // namespace kestrav
