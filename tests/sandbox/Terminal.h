#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

#include "base/UniqueFd.h"
#include "tests/sandbox/ChildProcess.h"

namespace kestrav {

/// A program in a terminal, with a person in front of it who reads and types.
class Terminal {
  public:
    /// Runs `words` (absolute path first) as `uid` with an empty environment. The program also gets `passedOn` under
    /// its own number, if it is a descriptor.
    Terminal(const std::vector<std::string>& words, uid_t uid, int passedOn = -1);

    /// Waits, at most `seconds`, until the terminal asks for a password and hides what is typed; false when it does
    /// not.
    bool isAsked(int seconds = 60);
    void type(const std::string& text);
    /// Walks away from the terminal.
    void leave() { process_.end(); }
    bool runs() const { return process_.runs(); }
    /// Reads on to the program's end; returns its exit status.
    int wait();

    const std::string& shown() const { return shown_; }

  private:
    bool read(int milliseconds);
    bool waitForSilence();

    UniqueFd terminal_;
    ChildProcess process_;
    std::string shown_;
    std::size_t seen_ = 0;
};

}  // namespace kestrav
