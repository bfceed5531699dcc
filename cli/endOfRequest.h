#pragma once

#include "cli/CommandParts.h"
#include "cli/UpdateResult.h"

namespace kestrav {

/// What came of the request that `parts.device` has just made, or has not: `asked` has its first block and its bytes,
/// and comes back with its disk and its end.
UpdateResult endOfRequest(UpdateResult asked, const CommandParts& parts);

}  // namespace kestrav
