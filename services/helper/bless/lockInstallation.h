#pragma once

#include <chrono>

#include "base/Outcome.h"
#include "base/UniqueFd.h"

namespace kestrav {

/// Where installers keep out of each other's way: a file in a folder where root alone makes files, which root alone
/// can open. A lock on anything that others can open could be taken by them for ever.
constexpr const char* kInstallationLockFolder = "/run";
constexpr const char* kInstallationLockName = "kestrav-bless.lock";

/// Keeps every other installer out until the result goes. Waits for one that runs already, but not longer than
/// `patience`. Refused where others could open the lock's file. The file itself stays.
Outcome<UniqueFd> lockInstallation(std::chrono::milliseconds patience);

}  // namespace kestrav
