#pragma once

#include "cli/UpdateResult.h"
#include "outcome/WriteState.h"

namespace kestrav {

/// What is said to somebody who presses Ctrl-C while a write is in that state: it is the service that writes, and it
/// goes on with what it has begun.
UpdateResult interruptedResult(const WriteState& state);

}  // namespace kestrav
