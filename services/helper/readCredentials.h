#pragma once

#include <cstdint>
#include <optional>
#include <systemd/sd-bus.h>

namespace kestrav {

/// Who made a connection, as the bus knows it from the socket.
struct Credentials {
    std::optional<std::uint32_t> uid;
    std::optional<std::uint32_t> process;
};

/// Reads the bus's answer to GetConnectionCredentials, "a{sv}". Empty where it is an error, or can't be read.
Credentials readCredentials(sd_bus_message* answer);

}  // namespace kestrav
