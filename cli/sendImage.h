#pragma once

#include "cli/CommandParts.h"
#include "cli/ExitCode.h"
#include "cli/Invocation.h"

namespace kestrav {

/// The commands that have the command service write a file onto the accessory. The file is checked before the engine
/// sees it, since the engine stops the process on an unreadable image.
ExitCode sendImage(const UpdateInvocation& update, const CommandParts& parts);
ExitCode sendImage(const PushInvocation& push, const CommandParts& parts);

}  // namespace kestrav
