#pragma once

#include <fstream>
#include <string>
#include <sys/types.h>
#include <thread>

#include "tests/eventually.h"

namespace kestrav {

/// Whether a thread of this process waits for something inside the kernel, which is the state S of proc(5). A thread
/// that is merely not given a processor doesn't.
inline bool isAsleep(pid_t thread) {
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string line;
    std::getline(file, line);
    // The name between the brackets may hold anything.
    const std::size_t nameEnds = line.rfind(") ");
    return nameEnds != std::string::npos && line.compare(nameEnds + 2, 1, "S") == 0;
}

/// Returns once that thread sleeps; false after a minute in which it never was seen to.
inline bool waitUntilAsleep(pid_t thread) {
    return eventually([thread] { return isAsleep(thread); });
}

}  // namespace kestrav
