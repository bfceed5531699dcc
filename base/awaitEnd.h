#pragma once

#include <optional>
#include <sys/types.h>
#include <sys/wait.h>

namespace kestrav {

/// Waits until the child process has ended and says how; it stays to be collected, so its number is not another's yet.
/// Nothing where the system doesn't tell.
std::optional<siginfo_t> awaitEnd(pid_t child);

}  // namespace kestrav
