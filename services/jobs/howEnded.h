#pragma once

#include <string>
#include <sys/types.h>

namespace kestrav {

/// Waits for the end of a child and says in words how it ended: "ended with status 1", "was ended by signal 9
/// (Killed)". The child stays to be collected.
std::string howEnded(pid_t child);

}  // namespace kestrav
