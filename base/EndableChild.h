#pragma once

#include <mutex>
#include <sys/types.h>

namespace kestrav {

/// A child process that runChild() waits for on one thread, and that another thread may ask to end.
class EndableChild {
  public:
    /// Asks it to end (SIGTERM), where it runs and this user may.
    void end();

    /// For whoever waits for it: that it runs, and that it does so no more. Between the two its number is its own.
    void begins(pid_t child);
    void isOver() { begins(-1); }

  private:
    std::mutex mutex_;
    pid_t child_ = -1;
};

}  // namespace kestrav
