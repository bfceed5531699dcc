#pragma once

#include <string>

#include "tests/sandbox/ChildProcess.h"

namespace kestrav {

/// The system's logind, as far as inhibitors go, on the system bus: gives them, and keeps a file about them. "gave WHAT
/// MODE" when it gives one, "refused MODE" when it doesn't, "released" once nobody holds it any more.
class FakeLogind {
  public:
    /// Gives inhibitors of that mode alone. Ready once this is made.
    explicit FakeLogind(const std::string& mode = "block");

    /// The lines so far.
    static std::string said();

  private:
    ChildProcess process_;
};

}  // namespace kestrav
