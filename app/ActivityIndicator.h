#pragma once

namespace kestrav {

class Button;

/// Something that turns while work is going on and doesn't know how much is left. Used on the main thread.
class ActivityIndicator {
  public:
    virtual ~ActivityIndicator() = default;

    /// `sender` is the button whose action the work is.
    virtual void startAnimation(const Button& sender) = 0;
    virtual void stopAnimation(const Button& sender) = 0;
};

}  // namespace kestrav
