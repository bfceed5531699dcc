#pragma once

#include <string>
#include <vector>

namespace kestrav {

/// What somebody asks for, as it was sent. Nothing of it is believed.
struct CommandLine {
    std::string command;
    std::vector<std::string> arguments;
};

}  // namespace kestrav
