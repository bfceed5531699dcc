#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

#include "command/MainQueue.h"

namespace kestrav {

/// A main queue whose tasks run where and when the test says: in `runOne`, on the calling thread.
class PumpedMainQueue final : public MainQueue {
  public:
    void async(std::function<void()> task) override {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
        changed_.notify_all();
    }

    std::size_t size() const {
        const std::lock_guard lock(mutex_);
        return tasks_.size();
    }

    /// Runs the oldest task, waiting for one at most as long as told; false when none came.
    bool runOne(std::chrono::milliseconds atMost = std::chrono::seconds(60)) {
        std::function<void()> task;
        {
            std::unique_lock lock(mutex_);
            if (!changed_.wait_for(lock, atMost, [this] { return !tasks_.empty(); })) return false;
            task = std::move(tasks_.front());
            tasks_.pop_front();
        }
        task();
        return true;
    }

  private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> tasks_;
};

}  // namespace kestrav
