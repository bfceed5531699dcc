#pragma once

#include <chrono>
#include <string>

#include "base/Outcome.h"
#include "base/SdBusPointers.h"
#include "protocol/names.h"

namespace kestrav {

/// How long whoever is behind the bus may take to answer, and a person's own agent to be reachable there: as long as
/// the bus's library waits as a rule. On a busy computer both need more than five seconds.
inline constexpr std::chrono::seconds kAnswerPatience{25};

/// A connection to the message bus at `address`, which has been begun and not waited for: the first call on it waits,
/// and fails if nobody answers. The environment has no say in where the system's bus is. The problem's `cause` is the
/// bus library's error.
Outcome<SdBusPtr> openSystemBus(const std::string& address = kSystemBusAddress);

}  // namespace kestrav
