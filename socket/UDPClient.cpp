#include "socket/UDPClient.h"

#include "socket/AddressText.h"
#include "socket/SocketError.h"
#include "socket/fittingInt32.h"
#include "socket/udp.h"

namespace kestrav {

// frozen: F54
UDPClient::UDPClient(const std::string& host, std::int32_t hostPort) : Socket("", 0) {
    AddressText resolved;
    if (udp_resolve_host(host.c_str(), resolved.data()) != 0) return;
    address = resolved.dotted();
    port = hostPort;
    const std::int32_t opened = udp_client_open();
    // frozen: F16
    if (opened > 0) fd = opened;
}

void UDPClient::send(std::span<const std::byte> bytes) {
    if (!fd) throw SocketException(SocketError::connectionClosed);
    const std::int32_t length = fittingLength(std::ssize(bytes));
    if (udp_send_to(*fd, bytes.data(), length, address.c_str(), port) != length)
        throw SocketException(SocketError::unknownError);
}

void UDPClient::send(std::string_view content) {
    // frozen: F52
    send(std::as_bytes(std::span(content.substr(0, content.find('\0')))));
}

void UDPClient::enableBroadcast() {
    if (fd) udp_enable_broadcast(*fd);
}

void UDPClient::close() {
    if (!fd) return;
    udp_close(*fd);
    fd.reset();
}

}  // namespace kestrav
