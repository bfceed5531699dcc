#pragma once

#include <chrono>

#include "cli/FleetOptions.h"

namespace kestrav {

/// When a waiting is over that began with this object, or with the last restart().
class Deadline {
  public:
    explicit Deadline(const Waiting& waiting) : waiting_(waiting) { restart(); }

    /// The time begins anew.
    void restart() { begun_ = Clock::now(); }
    /// Never, where no time was given.
    bool isOver() const {
        if (!waiting_.seconds) return false;
        return std::chrono::duration<double>(Clock::now() - begun_).count() >= static_cast<double>(*waiting_.seconds);
    }

  private:
    using Clock = std::chrono::steady_clock;
    Waiting waiting_;
    Clock::time_point begun_;
};

}  // namespace kestrav
