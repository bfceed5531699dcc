#pragma once

#include <functional>

#include "services/gate/RequestLog.h"

namespace kestrav {

/// What a service's program is besides its service.
struct ServiceProgram {
    const char* name;  ///< as it is called, and as the system log has it
    /// What --version says, name and version: in one piece, by which "kestravctl doctor" knows the program that is
    /// installed.
    const char* version;
    const char* help;  ///< what --help says, line ends included
};

/// main() of a root service: answers --help and --version, gives back 2 for any other word, and otherwise what `serve`
/// gives back. Nobody who has gone, or does not read, can hold it up with its standard error. An exception that `serve`
/// lets out becomes a line of the log and the status 1.
int serviceMain(int count, char** words, const ServiceProgram& program,
                const std::function<int(RequestLog& log)>& serve);

}  // namespace kestrav
