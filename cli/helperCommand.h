#pragma once

#include <functional>
#include <optional>
#include <string>

#include "cli/Commands.h"
#include "cli/ExitCode.h"
#include "cli/HelperInvocation.h"

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
    /// Takes the helper away; the sentence that says why not, if it could not be done.
    std::function<std::optional<std::string>()> uninstall;
    std::function<HelperState()> state;
};

/// Carries out one `kestravctl helper` command and waits for its end. What goes wrong on the channel goes to `log`.
ExitCode carryOutHelper(const HelperInvocation& invocation, const HelperParts& parts, const Console& console);

}  // namespace kestrav
