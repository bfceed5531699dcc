#pragma once

#include <functional>
#include <iosfwd>

#include "cli/AnswerLog.h"
#include "cli/Backends.h"
#include "cli/ChosenDevices.h"
#include "cli/CommandParts.h"
#include "cli/TransferMeter.h"
#include "device/KestravDevice.h"
#include "device/WatchedRegistry.h"
#include "outcome/ServiceAnswers.h"
#include "outcome/WriteWatch.h"

namespace kestrav {

/// An engine for one accessory, and all that watches what it does. For one thread; several may work side by side.
class WatchedEngine {
  public:
    /// Hears of each exchange with the command service when it has ended.
    using Told = std::function<void(const ServiceAnswers::Exchange&)>;

    /// The references are not owned and outlive this object. The engine's lines go to `progress`; how a write goes on,
    /// to `show`, if somebody wants to know.
    WatchedEngine(const Backends& backends, AccessoryChoice choice, Console console, std::ostream& progress,
                  WriteWatch::Show show = {}, Told told = {});
    WatchedEngine(const WatchedEngine&) = delete;
    WatchedEngine& operator=(const WatchedEngine&) = delete;

    /// What the commands work with.
    CommandParts parts();

  private:
    Console console_;
    const Backends& backends_;
    ChosenDevices chosen_;
    WatchedRegistry registry_;
    TransferMeter meter_;
    ServiceAnswers answers_;
    WriteWatch watch_;
    AnswerLog log_;
    CommandService commands_;
    KestravDevice device_;
};

}  // namespace kestrav
