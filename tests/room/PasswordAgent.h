#pragma once

#include <string>
#include <sys/types.h>

#include "base/UniqueFd.h"
#include "tests/room/ChildProcess.h"

namespace kestrav {

/// A person at a terminal: the text agent of polkit on a pseudo-terminal, which asks on behalf of one process.
class PasswordAgent {
  public:
    /// Answers for the process `subject` of `uid`. Ready to be asked once this is made.
    PasswordAgent(pid_t subject, uid_t uid);

    /// Waits, at most `seconds`, until the terminal asks for a password; false when it does not.
    bool isAsked(int seconds = 10);
    void type(const std::string& text);
    /// Walks away from the terminal.
    void leave() { process_.end(); }

    const std::string& shown() const { return shown_; }

  private:
    bool waitForSilence();

    UniqueFd terminal_;
    ChildProcess process_;
    std::string shown_;
    std::size_t seen_ = 0;
};

}  // namespace kestrav
