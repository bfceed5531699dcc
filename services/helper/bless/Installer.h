#pragma once

#include <string>

namespace kestrav {

/// The installer's three operations. Each is complete or raises `InstallError`, may be repeated, and waits for another
/// one that runs at the same time. Each answers with one sentence on what was done.
/// `ownFolder` is where the installer's own program stands, and the helper's program beside it.
std::string installHelper(const std::string& ownFolder);
std::string uninstallHelper();
std::string registerRight();

}  // namespace kestrav
