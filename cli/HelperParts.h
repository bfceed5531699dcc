#pragma once

#include <functional>
#include <optional>
#include <string>

#include "base/Outcome.h"

namespace kestrav {

class Authorization;
class HelperChannel;
class SystemLog;

/// Whether the helper is there, as the system bus sees it.
enum class HelperState {
    running,
    installed,     ///< not running; the next request starts it
    notInstalled,  ///< the bus knows nobody of that name
    unknown,       ///< there is no system bus to ask
};

/// What the helper's commands work with. Nothing is owned; all outlive the call.
struct HelperParts {
    Authorization& authorization;
    HelperChannel& channel;
    SystemLog& log;
    SystemLog& quietLog;  ///< the same log without the terminal
    /// Takes the helper away.
    std::function<Outcome<void>()> uninstall;
    std::function<HelperState()> state;
};

}  // namespace kestrav
