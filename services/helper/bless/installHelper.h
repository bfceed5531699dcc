#pragma once

#include <string>

#include "base/Outcome.h"

namespace kestrav {

/// The installer's three operations. Each is complete or fails, may be repeated, and waits some minutes for another one
/// that runs at the same time. One that has nothing to do waits for nobody. Each answers with one sentence on what was
/// done, or on what went wrong.
/// `ownFolder` is where the installer's own program stands, and the helper's program beside it.
Outcome<std::string> installHelper(const std::string& ownFolder);
Outcome<std::string> uninstallHelper();
Outcome<std::string> registerRight();

}  // namespace kestrav
