#pragma once

#include <functional>

namespace kestrav {

/// The application's main thread, as a place to send work to.
class MainQueue {
  public:
    virtual ~MainQueue() = default;

    /// Has `task` run on the main thread later, after the tasks that were sent before. Callable on any thread.
    virtual void async(std::function<void()> task) = 0;
};

}  // namespace kestrav
