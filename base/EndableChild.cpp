#include "base/EndableChild.h"

#include <csignal>

namespace kestrav {

void EndableChild::begins(pid_t child) {
    const std::scoped_lock lock(mutex_);
    child_ = child;
}

void EndableChild::end() {
    const std::scoped_lock lock(mutex_);
    // 1 is the system's own first process, and what is below it stands for many.
    if (child_ > 1) ::kill(child_, SIGTERM);
}

}  // namespace kestrav
