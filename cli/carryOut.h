#pragma once

#include "cli/CommandParts.h"
#include "cli/ExitCode.h"
#include "cli/Invocation.h"

namespace kestrav {

/// Carries one invocation out and makes sure that standard output took what was printed.
ExitCode carryOut(const Invocation& invocation, const CommandParts& parts);

}  // namespace kestrav
