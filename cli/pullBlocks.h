#pragma once

#include "cli/CommandParts.h"
#include "cli/ExitCode.h"
#include "cli/Invocation.h"

namespace kestrav {

/// Has the command service read blocks of the accessory.
ExitCode pullBlocks(const PullInvocation& pull, const CommandParts& parts);

}  // namespace kestrav
