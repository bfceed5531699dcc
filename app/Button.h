#pragma once

#include <optional>
#include <string>

namespace kestrav {

/// A button of the main window. Used on the main thread.
class Button {
  public:
    virtual ~Button() = default;

    /// The name that tells the window's buttons apart; not shown to anybody.
    virtual std::optional<std::string> identifier() const = 0;
    virtual void setEnabled(bool enabled) = 0;
};

}  // namespace kestrav
