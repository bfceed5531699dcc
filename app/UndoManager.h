#pragma once

#include <functional>
#include <utility>
#include <vector>

namespace kestrav {

/// Remembers how to take changes back, the latest first.
class UndoManager {
  public:
    void registerUndo(std::function<void()> takeBack) { steps_.push_back(std::move(takeBack)); }
    bool canUndo() const { return !steps_.empty(); }

    /// Takes the latest change back; does nothing when there is none.
    void undo() {
        if (steps_.empty()) return;
        const std::function<void()> takeBack = std::move(steps_.back());
        steps_.pop_back();
        takeBack();
    }

  private:
    std::vector<std::function<void()>> steps_;
};

}  // namespace kestrav
