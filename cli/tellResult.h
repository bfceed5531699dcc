#pragma once

#include "cli/Console.h"
#include "cli/ExitCode.h"
#include "cli/UpdateResult.h"

namespace kestrav {

/// Says the result's last line, if it has one: a success on standard output, anything else on standard error. With
/// `json` standard output gets the result's object in place of that. Returns the status to end with.
ExitCode tellResult(const UpdateResult& result, bool json, const Console& console);

}  // namespace kestrav
