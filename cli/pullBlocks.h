#pragma once

#include "cli/CommandParts.h"
#include "cli/Invocation.h"
#include "cli/UpdateResult.h"

namespace kestrav {

/// Has the command service read blocks of the accessory: what came of it, which is not said yet.
UpdateResult pullBlocks(const PullInvocation& pull, const CommandParts& parts);

}  // namespace kestrav
