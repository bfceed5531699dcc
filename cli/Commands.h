#pragma once

#include <iosfwd>

#include "cli/ExitCode.h"
#include "cli/Invocation.h"

namespace kestrav {

class KestravDevice;
class LastEntryLog;
class TransferMeter;

/// Where a command says what it has to say. Neither stream is owned.
struct Console {
    std::ostream& out;  ///< standard output: the data, or else the progress
    std::ostream& err;  ///< standard error: refusals, and the progress when `out` carries data
};

/// Carries one invocation out on `device`, which reads disks through `meter` and whose progress lines must already lead
/// to the right stream of `console`. `answers` is the log of the command service that `device` writes through. Files
/// are checked before the engine sees them, since the engine stops the process on an unreadable image.
ExitCode carryOut(const Invocation& invocation, KestravDevice& device, const TransferMeter& meter,
                  const LastEntryLog& answers, const Console& console);

}  // namespace kestrav
