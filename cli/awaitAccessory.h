#pragma once

#include "cli/AccessoryChoice.h"
#include "cli/CommandParts.h"
#include "cli/FleetOptions.h"

namespace kestrav {

/// Returns when an accessory that is meant is attached and its disk can be used, or when the time is over. Says on
/// standard error that it waits, if it does.
void awaitAccessory(const Waiting& waiting, const AccessoryChoice& choice, const CommandParts& parts);

}  // namespace kestrav
