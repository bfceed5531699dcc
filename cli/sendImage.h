#pragma once

#include "cli/CommandParts.h"
#include "cli/Invocation.h"
#include "cli/UpdateResult.h"

namespace kestrav {

/// The commands that have the command service write a file onto the accessory: what came of it, which is not said yet.
/// The file is checked before the engine sees it, since the engine stops the process on an unreadable image.
UpdateResult sendImage(const UpdateInvocation& update, const CommandParts& parts);
UpdateResult sendImage(const PushInvocation& push, const CommandParts& parts);

}  // namespace kestrav
