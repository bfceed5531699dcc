#pragma once

#include <sys/types.h>

namespace kestrav {

/// A password prompt for a program in a terminal: polkit's text agent, which asks on behalf of this process when no
/// desktop does. Runs as long as this object lives. Nothing is started where nobody could be asked (standard input is
/// no terminal) or nobody needs to be (this process is root).
class TextAgent {
  public:
    /// Waits until the agent is ready, or cannot be had.
    TextAgent();
    ~TextAgent();
    TextAgent(const TextAgent&) = delete;
    TextAgent& operator=(const TextAgent&) = delete;

  private:
    pid_t agent_ = -1;
};

}  // namespace kestrav
