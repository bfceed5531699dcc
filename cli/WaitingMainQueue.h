#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

#include "command/MainQueue.h"

namespace kestrav {

/// The main thread of a program without an event loop: it works off, one by one, what any thread sends it.
class WaitingMainQueue final : public MainQueue {
  public:
    void async(std::function<void()> task) override;

    /// Waits until there is a task, without limit, and runs it. For the main thread.
    void runOne();

  private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::function<void()>> tasks_;
};

}  // namespace kestrav
