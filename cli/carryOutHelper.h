#pragma once

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/HelperInvocation.h"
#include "cli/HelperParts.h"

namespace kestrav {

/// Carries out one `kestravctl helper` command and waits for its end. What goes wrong on the channel goes to the log of
/// `parts`.
ExitCode carryOutHelper(const HelperInvocation& invocation, const HelperParts& parts, const Console& console);

}  // namespace kestrav
