#pragma once

#include <cstdint>
#include <netinet/in.h>
#include <optional>

namespace kestrav {

/// The first IPv4 address of a host name or dotted address, as gethostbyname(3) gives it, but safe with threads.
/// Absent when the lookup finds nothing. May ask the name service, and block as long as that takes.
std::optional<in_addr> firstAddressOf(const char* host);

/// An IPv4 endpoint, its padding cleared. Of `port`, in host order, the low 16 bits count.
/// Linux has no length byte in this structure, so there is none to fill in.
sockaddr_in ipv4Endpoint(in_addr address, std::int32_t port);

/// inet_addr(3): text in any of its dotted forms; what it can't read becomes 255.255.255.255.
in_addr addressFromText(const char* text);

/// Copies the dotted text of an address, at most 15 characters and no NUL, into `text`.
void copyAddressText(in_addr address, char* text);

/// Switches an integer option of level SOL_SOCKET on. What setsockopt(2) returns.
int switchOn(int fd, int option);

}  // namespace kestrav
