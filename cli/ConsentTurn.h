#pragma once

#include <condition_variable>
#include <mutex>

namespace kestrav {

/// Keeps several requests of one process from asking an administrator at once: the consent that the first one gets
/// counts for all that come after it. One at a time goes in, until one comes out that the service has served; from then
/// on nobody waits. May be used on any thread.
class ConsentTurn {
  public:
    /// `isNeeded`: whether anybody is going to be asked at all.
    explicit ConsentTurn(bool isNeeded) : isGiven_(!isNeeded) {}

    void enter() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return isGiven_ || !isTaken_; });
        isTaken_ = true;
    }

    void leave(bool wasServed) {
        const std::lock_guard lock(mutex_);
        isTaken_ = false;
        if (wasServed) isGiven_ = true;
        changed_.notify_all();
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isGiven_;
    bool isTaken_ = false;
};

}  // namespace kestrav
