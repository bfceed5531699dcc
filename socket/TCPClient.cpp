#include "socket/TCPClient.h"

#include "socket/SocketError.h"
#include "socket/fittingInt32.h"
#include "socket/tcp.h"

namespace kestrav {
namespace {

// frozen: F51
SocketError errorFromCode(std::int32_t code) {
    if (code == -2) return SocketError::connectionClosed;
    if (code == -1) return SocketError::queryFailed;
    if (code == -3) return SocketError::connectionTimeout;
    return SocketError::unknownError;
}

}  // namespace

void TCPClient::connect(std::int64_t timeout) {
    const std::int32_t result = tcp_connect_with_timeout(address.c_str(), port, fittingInt32(timeout));
    // frozen: F16
    if (result < 1) throw SocketException(errorFromCode(result));
    fd = result;
}

void TCPClient::send(std::string_view text) {
    // frozen: F52
    send(std::as_bytes(std::span(text.substr(0, text.find('\0')))));
}

void TCPClient::send(std::span<const std::byte> bytes) {
    if (!fd) throw SocketException(SocketError::connectionClosed);
    const std::int32_t length = fittingLength(std::ssize(bytes));
    if (tcp_write_all(*fd, bytes.data(), length) != length) throw SocketException(SocketError::unknownError);
}

std::optional<std::vector<std::byte>> TCPClient::read(std::int64_t length, std::int64_t timeout) {
    if (!fd) return std::nullopt;
    const std::int32_t most = fittingLength(length);
    const std::int32_t seconds = fittingInt32(timeout);
    std::vector<std::byte> buffer(static_cast<std::size_t>(most));
    const std::int32_t count = tcp_read_with_timeout(*fd, buffer.data(), most, seconds);
    // frozen: F56
    if (count < 1) return std::nullopt;
    buffer.resize(static_cast<std::size_t>(count));
    return buffer;
}

void TCPClient::close() {
    if (!fd) return;
    tcp_close(*fd);
    fd.reset();
}

}  // namespace kestrav
