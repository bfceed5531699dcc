#pragma once

#include <netinet/in.h>
#include <optional>

namespace kestrav {

/// The first IPv4 address of a host name or dotted address, as gethostbyname(3) gives it, but safe with threads.
/// Absent when the lookup finds nothing. May ask the name service, and block as long as that takes.
std::optional<in_addr> firstAddressOf(const char* host);

}  // namespace kestrav
