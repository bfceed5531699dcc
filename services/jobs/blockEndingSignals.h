#pragma once

#include <array>
#include <csignal>

namespace kestrav {

/// A terminal that closes and Ctrl-\ mean the same as a service manager's SIGTERM.
inline constexpr std::array kEndingSignals{SIGTERM, SIGINT, SIGHUP, SIGQUIT};

/// For a service: blocks those signals and SIGCHLD, for an event loop to take, and ignores those that mean nothing to
/// it and would end a write if they were left to the system.
void blockEndingSignals();

/// For a process that a service forked off: a signal reaches a whole group of processes at once, and a write that was
/// begun ends first.
void ignoreEndingSignals();

}  // namespace kestrav
