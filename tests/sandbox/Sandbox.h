#pragma once

#include <filesystem>
#include <string>
#include <sys/types.h>

#include "base/UniqueFd.h"

namespace kestrav {

/// A view of this computer in which a test may install things: /etc, /usr/local, /usr/libexec, the folders of polkit
/// and /run are the test's own, everything else is the real one. What is changed in it is gone with it.
/// The process lives in it until the object goes, so nothing else may run in the process meanwhile. Needs root.
class Sandbox {
  public:
    Sandbox();
    ~Sandbox();
    Sandbox(const Sandbox&) = delete;
    Sandbox& operator=(const Sandbox&) = delete;

    /// Whether this process may make one.
    static bool isPossible();

  private:
    std::filesystem::path before_;
    UniqueFd outside_;
    std::filesystem::path scratch_;
};

}  // namespace kestrav
