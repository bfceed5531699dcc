#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <systemd/sd-bus.h>

namespace kestrav {

/// The bytes of a message of the bus, little-endian, as they come over a socket.
struct MessageBytes {
    unsigned char kind = 1;  ///< 1 a call, 2 an answer, 3 an error
    std::string signature;
    std::string body;

    std::string whole() const;
    /// Appends a number or a text to a body, padded as the bus wants it.
    static void append(std::string& body, std::uint32_t number);
    static void append(std::string& body, std::string_view text);
};

using MessageTaker = std::function<void(sd_bus_message*)>;

/// Has libsystemd receive `bytes` over a socket of their own; `take` is called with each message that it makes of them.
void receive(std::string_view bytes, const MessageTaker& take);
/// The same for a message whose lengths are right, behind which the connection can serve the next one: ten times
/// sooner.
void receive(const MessageBytes& message, const MessageTaker& take);

}  // namespace kestrav
