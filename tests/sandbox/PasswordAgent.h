#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

#include "tests/sandbox/Terminal.h"

namespace kestrav {

/// A person at a terminal who is asked for passwords: the text agent of polkit, on behalf of one process.
class PasswordAgent {
  public:
    /// Answers for the process `subject` of `uid`. Ready to be asked once this is made.
    PasswordAgent(pid_t subject, uid_t uid);

    /// See Terminal.
    bool isAsked(int seconds = 60) { return terminal_->isAsked(seconds); }
    void type(const std::string& text) { terminal_->type(text); }
    void leave() { terminal_->leave(); }
    const std::string& shown() const { return terminal_->shown(); }

  private:
    std::optional<Terminal> terminal_;
};

}  // namespace kestrav
