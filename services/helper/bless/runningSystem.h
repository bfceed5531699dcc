#pragma once

#include <string>

#include "base/Outcome.h"

namespace kestrav {

/// Tells those who run already about changed files. Each does nothing where its addressee does not run, as in a
/// container, and fails where it runs and does not take the change.
Outcome<void> reloadBus();
Outcome<void> reloadServiceUnits();
/// Also has the accessory's disk, if it is plugged in, looked at again.
Outcome<void> reloadDeviceRules();

/// What the polkit that runs says of itself, such as "122". Empty where none answers.
std::string runningPolkitVersion();

/// Has a running helper end itself as soon as no job of its runs; the next request starts the installed one.
void retireRunningHelper();

}  // namespace kestrav
