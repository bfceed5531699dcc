#pragma once

#include "cli/CommandParts.h"
#include "cli/ExitCode.h"
#include "cli/Invocation.h"

namespace kestrav {

/// The commands that only look: for the accessory, and for the mounted drives.
ExitCode lookUp(const DetectInvocation& detect, const CommandParts& parts);
ExitCode lookUp(const DrivesInvocation& drives, const CommandParts& parts);

}  // namespace kestrav
