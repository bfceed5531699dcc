#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "services/privileged/Outcome.h"

namespace kestrav {

/// A request as it comes over the wire: {"command": text, "arguments": [text, ...]}.
struct CommandRequest {
    std::string command;
    std::vector<std::string> arguments;
};

/// Reads a request strictly: exactly these two members, in any order, nothing else. Everything else is refused.
Outcome<CommandRequest> readRequest(std::string_view bytes);

}  // namespace kestrav
