#pragma once

#include "app/UpdateEnding.h"
#include "app/UpdateFacts.h"

namespace kestrav {

/// What came of the update by all that is known of it. Half an answer, a stranger's, and silence after the unmounting
/// are no success and no failure: nobody knows then. Pure.
UpdateEnding endingOf(const UpdateFacts& facts);

}  // namespace kestrav
