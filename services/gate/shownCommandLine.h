#pragma once

#include <span>
#include <string>
#include <string_view>

namespace kestrav {

/// `start`, then the command line in one harmless line, cut with " ..." once it is longer than 2000 bytes.
std::string shownCommandLine(std::string start, std::string_view command, std::span<const std::string> arguments);

}  // namespace kestrav
