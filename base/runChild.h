#pragma once

#include <string>
#include <vector>

#include "base/Outcome.h"

namespace kestrav {

class EndableChild;

/// How a program ended.
struct ChildRun {
    int exitStatus = -1;  ///< what it exited with; -1 when a signal ended it
    std::string errors;   ///< the first 4096 bytes of its standard error
};

/// Runs the program `words[0]` (an absolute path) with the other words, as a direct child and without this process's
/// environment, and waits for its end. It reads nothing and its standard output is dropped. A problem when it could not
/// be started; its `cause` is the system's error.
/// Another thread may ask it to end by way of `child`, which is not owned.
Outcome<ChildRun> runChild(const std::vector<std::string>& words, EndableChild* child = nullptr);

}  // namespace kestrav
