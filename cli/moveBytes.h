#pragma once

#include "cli/CommandParts.h"
#include "cli/ExitCode.h"
#include "cli/Invocation.h"

namespace kestrav {

/// The commands that read and write the accessory's disk themselves, without the command service.
ExitCode moveBytes(const ReadInvocation& read, const CommandParts& parts);
ExitCode moveBytes(const WriteInvocation& write, const CommandParts& parts);

}  // namespace kestrav
