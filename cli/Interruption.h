#pragma once

#include <csignal>
#include <functional>
#include <thread>

#include "base/UniqueFd.h"

namespace kestrav {

/// As long as this object lives, Ctrl-C (SIGINT) has `lastWords` said and ends the process with status 130 then. A
/// second one ends it at once, whatever holds the words up. Nothing that runs is stopped: what the service was asked
/// for goes on without this process.
///
/// Make it before any thread is started: they take the blocked signal over. `lastWords` runs on a thread of its own.
class Interruption {
  public:
    explicit Interruption(std::function<void()> lastWords);
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

  private:
    void wait(const std::function<void()>& lastWords) const;

    sigset_t before_{};
    UniqueFd signal_;
    UniqueFd end_;
    std::thread waiting_;
};

}  // namespace kestrav
