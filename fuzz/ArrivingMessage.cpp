#include "fuzz/ArrivingMessage.h"

#include <array>
#include <optional>
#include <sys/socket.h>
#include <unistd.h>

#include "base/SdBusPointers.h"
#include "base/UniqueFd.h"
#include "base/stopProcess.h"

namespace kestrav {
namespace {

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

/// Two ends of a connection, one of them libsystemd's.
class Connection {
  public:
    Connection() {
        std::array<int, 2> ends{};
        require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) == 0);
        peer_ = UniqueFd(ends[1]);
        sd_bus* raw = nullptr;
        require(sd_bus_new(&raw) >= 0);
        bus_ = SdBusPtr(raw);
        require(sd_bus_set_fd(raw, ends[0], ends[0]) >= 0);
        require(sd_bus_set_server(raw, 1, sd_id128_t{}) >= 0 && sd_bus_set_anonymous(raw, 1) >= 0);
        require(sd_bus_add_filter(raw, nullptr, onMessage, this) >= 0 && sd_bus_start(raw) >= 0);
        require(send(std::string(1, '\0') + "AUTH ANONYMOUS\r\nBEGIN\r\n"));
        for (int step = 0; step < 16; ++step)
            sd_bus_process(raw, nullptr);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void receive(std::string_view bytes, const MessageTaker& take) {
        take_ = &take;
        if (!send(bytes)) return;
        for (int step = 0; step < 64 && sd_bus_process(bus_.get(), nullptr) > 0; ++step) {
        }
    }
    bool isOpen() const { return sd_bus_is_ready(bus_.get()) > 0; }

  private:
    static int onMessage(sd_bus_message* message, void* connection, sd_bus_error*) {
        (*static_cast<const Connection*>(connection)->take_)(message);
        return 1;
    }
    bool send(std::string_view bytes) const {
        return ::send(peer_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
    }

    UniqueFd peer_;
    SdBusPtr bus_;
    const MessageTaker* take_ = nullptr;
};

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

void receive(std::string_view bytes, const MessageTaker& take) {
    Connection().receive(bytes, take);
}

void receive(const MessageBytes& message, const MessageTaker& take) {
    static std::optional<Connection> lasting;
    const std::string bytes = message.whole();
    if (!lasting || !lasting->isOpen()) lasting.emplace();
    bool isTaken = false;
    lasting->receive(bytes, [&](sd_bus_message* arrived) {
        isTaken = true;
        take(arrived);
    });
    // What was not made a message may wait for more.
    if (!isTaken) lasting.reset();
}

}  // namespace kestrav
