#pragma once

#include <sys/types.h>

#include "tests/room/ChildProcess.h"

namespace kestrav {

/// A person who closes every prompt: an authentication agent for one process that cancels whatever it is asked.
class DismissingAgent {
  public:
    /// Answers for the process `subject` of `uid`. Ready to be asked once this is made.
    DismissingAgent(pid_t subject, uid_t uid);

  private:
    ChildProcess process_;
};

}  // namespace kestrav
