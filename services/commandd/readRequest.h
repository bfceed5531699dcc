#pragma once

#include <string_view>

#include "base/Outcome.h"
#include "services/gate/CommandLine.h"

namespace kestrav {

/// Reads a request as it comes over the wire, {"command": text, "arguments": [text, ...]}, strictly: exactly these two
/// members, in any order, each once, nothing else. Everything else is refused.
Outcome<CommandLine> readRequest(std::string_view bytes);

}  // namespace kestrav
