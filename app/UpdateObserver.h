#pragma once

#include <string>

namespace kestrav {

class Button;

/// Hears when the controller runs an update, for whoever shows more of it than the log. Used on the main thread.
class UpdateObserver {
  public:
    virtual ~UpdateObserver() = default;

    /// Before anything of it is done. `sender` is the button it was asked for with.
    virtual void updateBegins(const Button& sender, const std::string& path) = 0;
    /// When all of it is done, whatever came of it.
    virtual void updateEnded(const Button& sender, const std::string& path) = 0;
};

}  // namespace kestrav
