#pragma once

#include "base/UniqueFd.h"

namespace kestrav {

/// Keeps the computer from sleeping and from being shut down as long as the descriptor is open: an inhibitor of logind,
/// one that blocks, else one that delays. Empty where no logind gives one within two seconds; then nothing is kept.
UniqueFd keepAwake();

}  // namespace kestrav
