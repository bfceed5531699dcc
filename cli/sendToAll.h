#pragma once

#include <functional>

#include "cli/AccessoryChoice.h"
#include "cli/Backends.h"
#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/FleetOptions.h"
#include "cli/SendOptions.h"
#include "cli/UpdateResult.h"

namespace kestrav {

struct CommandParts;

/// One image for several accessories: what is sent, and how.
struct FleetOrder {
    AccessoryChoice accessories;  ///< those that are meant; all when nothing was chosen
    SendOptions options;
    FleetOptions fleet;
    /// Sends it to the one accessory that the parts are for. Called on several threads at once.
    std::function<UpdateResult(const CommandParts&)> send;
};

/// Sends an image to all accessories that are meant, side by side, each with an engine and a thread of its own, so that
/// one that fails or was pulled out holds no other up. At the end one table, or one JSON object, says what became of
/// each. Returns the worst of their statuses, which is the highest.
ExitCode sendToAll(const FleetOrder& order, const Backends& backends, const Console& console);

}  // namespace kestrav
