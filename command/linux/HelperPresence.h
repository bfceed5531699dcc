#pragma once

#include <optional>
#include <string>

namespace kestrav {

/// What the system bus knows about a service's name.
struct HelperPresence {
    bool owned = false;      ///< somebody bears it
    bool startable = false;  ///< the bus can start somebody who will
};

/// Asks the bus at `busAddress`; nothing when there is none. Waits for its answer.
std::optional<HelperPresence> helperPresence(const std::string& busAddress, const std::string& service);

}  // namespace kestrav
