#pragma once

namespace kestrav {

/// Tells those who run already about changed files. Each does nothing where its addressee does not run, as in a
/// container, and raises `InstallError` where it runs and does not take the change.
void reloadBus();
void reloadServiceUnits();
/// Also has the accessory's disk, if it is plugged in, looked at again.
void reloadDeviceRules();

/// Has a running helper end itself as soon as no job of its runs; the next request starts the installed one.
void retireRunningHelper();

}  // namespace kestrav
