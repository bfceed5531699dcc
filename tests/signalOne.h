#pragma once

#include <csignal>
#include <stdexcept>
#include <sys/types.h>

namespace kestrav {

/// Sends a signal to that one process. A number that is not a process's, such as the -1 of a fork that failed, means
/// many processes or all of them to kill(2): here it raises.
inline void signalOne(pid_t process, int number) {
    if (process <= 0) throw std::runtime_error("no process to send a signal to");
    ::kill(process, number);
}

}  // namespace kestrav
