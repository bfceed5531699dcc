#pragma once

#include "cli/Console.h"

namespace kestrav {

class ChosenDevices;
class KestravDevice;
class ServiceAnswers;
class TransferMeter;
class WatchedRegistry;
class WriteWatch;
struct Backends;

/// What the commands work with. Nothing is owned; all outlive the call. For one thread.
struct CommandParts {
    KestravDevice& device;            ///< its progress lines must already lead to the right stream of `console`
    const WatchedRegistry& registry;  ///< the one that `device` asks
    const ChosenDevices& chosen;      ///< the one behind it, which passes on the accessory that is meant
    TransferMeter& meter;             ///< the disk calls that `device` reads and writes through
    const ServiceAnswers& answers;    ///< what the command service answers to `device`
    WriteWatch& watch;                ///< the one that they come through
    Console console;
    const Backends& backends;  ///< what all of this stands on
};

}  // namespace kestrav
