#pragma once

#include "cli/Console.h"

namespace kestrav {

class KestravDevice;
class ServiceAnswers;
class TransferMeter;
class WatchedRegistry;
class WriteWatch;

/// What the commands work with. Nothing is owned; all outlive the call. For one thread.
struct CommandParts {
    KestravDevice& device;            ///< its progress lines must already lead to the right stream of `console`
    const WatchedRegistry& registry;  ///< the one that `device` asks
    TransferMeter& meter;             ///< the disk calls that `device` reads and writes through
    const ServiceAnswers& answers;    ///< what the command service answers to `device`
    WriteWatch& watch;                ///< the one that they come through
    Console console;
};

}  // namespace kestrav
