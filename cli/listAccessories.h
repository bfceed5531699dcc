#pragma once

#include "cli/CommandParts.h"
#include "cli/ExitCode.h"
#include "cli/Invocation.h"

namespace kestrav {

/// Lists all attached accessories, in the order of their ports.
ExitCode listAccessories(const ListInvocation& list, const CommandParts& parts);

}  // namespace kestrav
