#pragma once

#include "cli/ServiceAnswers.h"
#include "cli/UpdateResult.h"

namespace kestrav {

/// What the exchange means for what was asked: `asked` has its disk, its first block and its bytes, and comes back with
/// an end. Only an answer that is the service's own, whole, and to this very request counts as one. Pure.
UpdateResult judgeExchange(const ServiceAnswers::Exchange& exchange, const UpdateResult& asked);

}  // namespace kestrav
