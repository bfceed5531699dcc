#pragma once

#include "cli/CommandParts.h"
#include "cli/Invocation.h"
#include "cli/UpdateResult.h"

namespace kestrav {

/// The commands that have the command service read the accessory: what came of it, which is not said yet. A file that
/// they write is there whole or not at all; standard output has got what was read up to where it went wrong.
UpdateResult pullBlocks(const PullInvocation& pull, const CommandParts& parts);
UpdateResult pullBlocks(const SaveInvocation& save, const CommandParts& parts);

}  // namespace kestrav
