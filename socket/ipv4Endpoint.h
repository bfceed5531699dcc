#pragma once

#include <cstdint>
#include <netinet/in.h>

namespace kestrav {

/// An IPv4 endpoint, its padding cleared. Of `port`, in host order, the low 16 bits count.
/// Linux has no length byte in this structure, so there is none to fill in.
sockaddr_in ipv4Endpoint(in_addr address, std::int32_t port);

/// inet_addr(3): text in any of its dotted forms; what it can't read becomes 255.255.255.255.
in_addr addressFromText(const char* text);

/// Copies the dotted text of an address, at most 15 characters and no NUL, into `text`.
void copyAddressText(in_addr address, char* text);

}  // namespace kestrav
