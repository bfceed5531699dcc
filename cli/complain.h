#pragma once

#include <string_view>

#include "cli/Console.h"
#include "cli/ExitCode.h"

namespace kestrav {

/// Says `sentence` on standard error, as one line that names the program. Control characters are shown escaped.
void complain(const Console& console, std::string_view sentence);

/// The same about a call that can't be carried out as it is; returns the status that it ends with.
ExitCode wrongCall(const Console& console, std::string_view sentence);

}  // namespace kestrav
