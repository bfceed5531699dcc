#include "tests/services/helper/FloodingCaller.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <poll.h>
#include <stdexcept>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace kestrav {
namespace {

void pad(std::string& bytes, std::size_t boundary) {
    bytes.resize((bytes.size() + boundary - 1) / boundary * boundary);
}

void appendNumber(std::string& bytes, std::size_t value) {
    pad(bytes, 4);
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift & 0xFFU);
}

void appendText(std::string& bytes, std::string_view text) {
    appendNumber(bytes, text.size());
    bytes.append(text).push_back('\0');
}

/// A header field with a text; `type` is 's' or 'o'.
void appendField(std::string& fields, char code, char type, std::string_view text) {
    pad(fields, 8);
    fields.append({code, 1, type, '\0'});
    appendText(fields, text);
}

/// A method call in the bus's own form, little-endian.
std::string methodCall(unsigned serial, std::string_view to, std::string_view object, std::string_view member,
                       std::string_view signature, const std::string& body) {
    std::string fields;
    appendField(fields, 1, 'o', object);
    appendField(fields, 2, 's', to);
    appendField(fields, 3, 's', member);
    appendField(fields, 6, 's', to);
    if (!signature.empty()) {
        pad(fields, 8);
        fields.append({8, 1, 'g', '\0', static_cast<char>(signature.size())});
        fields.append(signature).push_back('\0');
    }
    std::string message{'l', 1, 0, 1};
    appendNumber(message, body.size());
    appendNumber(message, serial);
    appendNumber(message, fields.size());
    message += fields;
    pad(message, 8);
    return message + body;
}

void sendAll(int socket, std::string_view bytes) {
    if (::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(bytes.size()))
        throw std::runtime_error("the bus takes nothing");
}

}  // namespace

FloodingCaller::FloodingCaller() : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::string_view("/run/dbus/system_bus_socket").copy(address.sun_path, sizeof address.sun_path - 1);
    if (::connect(socket_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        throw std::runtime_error("no bus");
    std::string greeting = std::string(1, '\0') + "AUTH EXTERNAL ";
    for (const char digit : std::to_string(::geteuid())) {
        std::array<char, 3> hex{};
        std::snprintf(hex.data(), hex.size(), "%02x", static_cast<unsigned>(digit));
        greeting += hex.data();
    }
    sendAll(socket_.get(), greeting + "\r\n");
    std::array<char, 512> answer{};
    if (::recv(socket_.get(), answer.data(), answer.size(), 0) < 2 || std::memcmp(answer.data(), "OK", 2) != 0)
        throw std::runtime_error("not let in");
    sendAll(socket_.get(), "BEGIN\r\n");
    constexpr const char* kBus = "org.freedesktop.DBus";
    sendAll(socket_.get(), methodCall(1, kBus, "/org/freedesktop/DBus", "Hello", {}, {}));
}

std::string FloodingCaller::callWithEmptyArguments(std::size_t count) {
    constexpr std::size_t kBytesOfAnEmptyText = 8;  // its length, its end, and the padding to the next one
    std::string body;
    appendText(body, "dd");
    appendNumber(body, count * kBytesOfAnEmptyText - 3);  // the last one has no padding
    body.resize(body.size() + count * kBytesOfAnEmptyText - 3);
    return methodCall(2, "com.corvatel.KestravHelper", "/com/corvatel/KestravHelper", "runWithCmd", "sas", body);
}

bool FloodingCaller::send(const std::string& call) const {
    std::string_view left = call;
    std::array<char, 65536> forgotten;  // NOLINT: nothing looks at it
    while (!left.empty()) {
        pollfd both{socket_.get(), POLLIN | POLLOUT, 0};
        ::poll(&both, 1, -1);
        if ((both.revents & POLLIN) != 0 && ::recv(socket_.get(), forgotten.data(), forgotten.size(), 0) <= 0)
            return false;
        if ((both.revents & POLLOUT) == 0) continue;
        const ssize_t sent = ::send(socket_.get(), left.data(), left.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent > 0) left.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

}  // namespace kestrav
