#include "fuzz/ArrivingMessage.h"

#include <array>
#include <sys/socket.h>
#include <unistd.h>

#include "base/SdBusPointers.h"
#include "base/UniqueFd.h"
#include "base/stopProcess.h"

namespace kestrav {
namespace {

using Taker = std::function<void(sd_bus_message*)>;

void pad(std::string& bytes, std::size_t boundary) {
    bytes.resize((bytes.size() + boundary - 1) / boundary * boundary);
}

/// A header field; `type` is 'o', 's' or 'g'.
void appendField(std::string& fields, char code, char type, std::string_view text) {
    pad(fields, 8);
    fields.append({code, 1, type, '\0'});
    if (type == 'g') {
        fields.push_back(static_cast<char>(text.size()));
        fields.append(text).push_back('\0');
    } else {
        MessageBytes::append(fields, text);
    }
}

int onMessage(sd_bus_message* message, void* take, sd_bus_error*) {
    (*static_cast<const Taker*>(take))(message);
    return 1;
}

}  // namespace

void MessageBytes::append(std::string& body, std::uint32_t number) {
    pad(body, 4);
    for (unsigned shift = 0; shift < 32; shift += 8)
        body += static_cast<char>(number >> shift & 0xFFU);
}

void MessageBytes::append(std::string& body, std::string_view text) {
    append(body, static_cast<std::uint32_t>(text.size()));
    body.append(text).push_back('\0');
}

std::string MessageBytes::whole() const {
    std::string fields;
    if (kind == 1) {
        appendField(fields, 1, 'o', "/com/corvatel/KestravHelper");
        appendField(fields, 2, 's', "com.corvatel.KestravHelper");
        appendField(fields, 3, 's', "runWithCmd");
    } else {
        if (kind == 3) appendField(fields, 4, 's', "org.freedesktop.PolicyKit1.Error.Failed");
        pad(fields, 8);
        fields.append({5, 1, 'u', '\0'});
        append(fields, std::uint32_t{7});  // the call that it answers
    }
    if (!signature.empty()) appendField(fields, 8, 'g', signature);
    std::string message{'l', static_cast<char>(kind), 0, 1};
    append(message, static_cast<std::uint32_t>(body.size()));
    append(message, std::uint32_t{2});
    append(message, static_cast<std::uint32_t>(fields.size()));
    message += fields;
    pad(message, 8);
    return message + body;
}

void receive(std::string_view bytes, const Taker& take) {
    std::array<int, 2> ends{};
    require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) == 0);
    const UniqueFd peer(ends[1]);
    sd_bus* raw = nullptr;
    require(sd_bus_new(&raw) >= 0);
    const SdBusPtr bus(raw);
    require(sd_bus_set_fd(raw, ends[0], ends[0]) >= 0);
    require(sd_bus_set_server(raw, 1, sd_id128_t{}) >= 0 && sd_bus_set_anonymous(raw, 1) >= 0);
    require(sd_bus_add_filter(raw, nullptr, onMessage, const_cast<Taker*>(&take)) >= 0 && sd_bus_start(raw) >= 0);
    const std::string greeting = std::string(1, '\0') + "AUTH ANONYMOUS\r\nBEGIN\r\n";
    require(::send(peer.get(), greeting.data(), greeting.size(), MSG_NOSIGNAL) ==
            static_cast<ssize_t>(greeting.size()));
    for (int step = 0; step < 16; ++step)
        sd_bus_process(raw, nullptr);
    const ssize_t sent = ::send(peer.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent != static_cast<ssize_t>(bytes.size())) return;
    for (int step = 0; step < 64 && sd_bus_process(raw, nullptr) > 0; ++step) {
    }
}

}  // namespace kestrav
