#include "cli/awaitAccessory.h"

#include <chrono>
#include <thread>

#include "cli/AccessoryArrivals.h"
#include "cli/Deadline.h"
#include "cli/complain.h"

namespace kestrav {

void awaitAccessory(const Waiting& waiting, const AccessoryChoice& choice, const CommandParts& parts) {
    AccessoryArrivals arrivals(parts.backends, choice);
    const Deadline deadline(waiting);
    for (bool isSaid = false;; isSaid = true) {
        const auto arrived = arrivals.take(AccessoryArrivals::When::ready);
        // A registry that is out of reach is for the command to report.
        if (!arrived || !arrived->empty() || deadline.isOver()) return;
        if (!isSaid) complain(parts.console, "Waiting for an accessory. Plug it in.");
        std::this_thread::sleep_for(AccessoryArrivals::kPause);
    }
}

}  // namespace kestrav
