#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "base/SystemLog.h"

namespace kestrav {

/// A system log that keeps its entries and the thread that wrote each. May be written to and read on any thread.
class RecordingLog final : public SystemLog {
  public:
    void write(std::string_view entry) override {
        const std::lock_guard lock(mutex_);
        entries_.emplace_back(entry);
        writers_.push_back(std::this_thread::get_id());
        changed_.notify_all();
    }

    std::vector<std::string> entries() const {
        const std::lock_guard lock(mutex_);
        return entries_;
    }

    /// Forgets what has been written so far.
    void clear() {
        const std::lock_guard lock(mutex_);
        entries_.clear();
        writers_.clear();
    }

    std::vector<std::thread::id> writers() const {
        const std::lock_guard lock(mutex_);
        return writers_;
    }

    /// Waits, at most a minute, until an entry begins with `start`; false when none came.
    bool waitFor(std::string_view start) const {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(60), [&] {
            return std::ranges::any_of(entries_, [&](const std::string& entry) { return entry.starts_with(start); });
        });
    }

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<std::string> entries_;
    std::vector<std::thread::id> writers_;
};

}  // namespace kestrav
