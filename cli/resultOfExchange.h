#pragma once

#include "cli/UpdateResult.h"
#include "outcome/ServiceAnswers.h"

namespace kestrav {

/// What is said of the exchange to the person who asked: `asked` has its disk, its first block and its bytes, and comes
/// back with an end. Pure.
UpdateResult resultOfExchange(const ServiceAnswers::Exchange& exchange, const UpdateResult& asked);

}  // namespace kestrav
