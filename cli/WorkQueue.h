#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace kestrav {

/// Pieces of work that are done side by side, so many at a time, in the order in which they came. Each thread is made
/// when there is work for it. The destructor returns when all is done.
template <typename Piece>
class WorkQueue {
  public:
    /// `work` is called on the threads of this object, on several at once.
    WorkQueue(std::int64_t threads, std::function<void(const Piece&)> work)
        : most_(static_cast<std::size_t>(threads)),
          work_(std::move(work)) {}
    WorkQueue(const WorkQueue&) = delete;
    WorkQueue& operator=(const WorkQueue&) = delete;
    ~WorkQueue() {
        {
            const std::lock_guard lock(mutex_);
            isClosed_ = true;
        }
        changed_.notify_all();
        for (std::thread& thread : threads_)
            thread.join();
    }

    void add(Piece piece) {
        const std::lock_guard lock(mutex_);
        pieces_.push_back(std::move(piece));
        if (pieces_.size() + underWay_ > threads_.size() && threads_.size() < most_)
            threads_.emplace_back([this] { workOn(); });
        changed_.notify_all();
    }

    /// Whether nothing is left to do.
    bool isIdle() const {
        const std::lock_guard lock(mutex_);
        return pieces_.empty() && underWay_ == 0;
    }

    /// Returns after that time, or when something has been done.
    void pause(std::chrono::milliseconds time) {
        std::unique_lock lock(mutex_);
        const std::size_t before = done_;
        changed_.wait_for(lock, time, [&] { return done_ != before; });
    }

  private:
    void workOn() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return isClosed_ || !pieces_.empty(); });
            if (pieces_.empty()) return;
            const Piece piece = std::move(pieces_.front());
            pieces_.pop_front();
            ++underWay_;
            lock.unlock();
            work_(piece);
            lock.lock();
            --underWay_;
            ++done_;
            changed_.notify_all();
        }
    }

    std::size_t most_;
    std::function<void(const Piece&)> work_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Piece> pieces_;
    std::size_t underWay_ = 0;
    std::size_t done_ = 0;
    bool isClosed_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace kestrav
