#include "cli/WaitingMainQueue.h"

#include <utility>

namespace kestrav {

void WaitingMainQueue::async(std::function<void()> task) {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
    arrived_.notify_one();
}

void WaitingMainQueue::runOne() {
    std::unique_lock lock(mutex_);
    arrived_.wait(lock, [this] { return !tasks_.empty(); });
    const auto task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task();
}

}  // namespace kestrav
