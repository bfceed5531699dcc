#pragma once

#include <string>
#include <vector>

namespace kestrav {

/// What `kestravctl helper ...` asks for.
struct HelperInvocation {
    enum class Operation { install, uninstall, status, run };

    Operation operation = Operation::status;
    std::string command;                 ///< run: the command word
    std::vector<std::string> arguments;  ///< run: its arguments, as typed
};

}  // namespace kestrav
