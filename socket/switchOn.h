#pragma once

namespace kestrav {

/// Switches an integer option of level SOL_SOCKET on. What setsockopt(2) returns.
int switchOn(int fd, int option);

}  // namespace kestrav
