#pragma once

#include <string>
#include <sys/types.h>

#include "base/UniqueFd.h"
#include "tests/sandbox/ChildProcess.h"

namespace kestrav {

/// A person who closes every prompt: an authentication agent for one process that cancels whatever it is asked.
class DismissingAgent {
  public:
    /// Answers for the process `subject` of `uid`, who reads the language of `locale`. Ready to be asked once this is
    /// made.
    DismissingAgent(pid_t subject, uid_t uid, const std::string& locale = "C");

    /// What the next prompt would have shown, as polkit sends it. Waits, at most ten seconds.
    std::string message();
    /// Whether there is a next one by now.
    bool isAsked() const;

  private:
    ChildProcess process_;
    UniqueFd prompts_;
};

}  // namespace kestrav
