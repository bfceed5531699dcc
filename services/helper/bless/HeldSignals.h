#pragma once

#include <csignal>

namespace kestrav {

/// While this lives, the signals with which others end this program wait, so that what was begun can be taken back
/// first; they take effect when it goes. SIGKILL waits for nobody. One thread.
class HeldSignals {
  public:
    HeldSignals();
    ~HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    /// Whether one of them waits: then the program ends as soon as this object goes.
    bool endIsNear() const;

  private:
    sigset_t held_;
    sigset_t before_;
};

}  // namespace kestrav
