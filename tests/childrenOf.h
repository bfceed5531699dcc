#pragma once

#include <fstream>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrav {

/// The processes that the main thread of that process has started and not yet collected.
inline std::vector<pid_t> childrenOf(pid_t parent) {
    const std::string id = std::to_string(parent);
    std::ifstream list("/proc/" + id + "/task/" + id + "/children");
    std::vector<pid_t> children;
    for (pid_t child = 0; list >> child;)
        children.push_back(child);
    return children;
}

}  // namespace kestrav
