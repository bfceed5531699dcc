#pragma once

#include "app/UpdateObserver.h"

namespace kestrav {

/// Tells two others of each update, one after the other.
class BothUpdateObservers final : public UpdateObserver {
  public:
    /// Neither is owned; both outlive this object.
    BothUpdateObservers(UpdateObserver& first, UpdateObserver& second) : first_(first), second_(second) {}

    void updateBegins(const Button& sender, const std::string& path) override {
        first_.updateBegins(sender, path);
        second_.updateBegins(sender, path);
    }
    void updateEnded(const Button& sender, const std::string& path) override {
        first_.updateEnded(sender, path);
        second_.updateEnded(sender, path);
    }

  private:
    UpdateObserver& first_;
    UpdateObserver& second_;
};

}  // namespace kestrav
