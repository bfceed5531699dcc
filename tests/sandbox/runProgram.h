#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace kestrav {

struct ProgramRun {
    int exitStatus = -1;  ///< -N when signal N ended it
    std::string out;
    std::string err;
};

struct ProgramOptions {
    uid_t uid = 0;                         ///< whom to run it as; its groups are that user's
    std::vector<std::string> environment;  ///< NAME=VALUE; nothing else is passed on
    std::string input;
};

/// Runs a program (absolute path first) to its end and keeps what it wrote.
ProgramRun runProgram(const std::vector<std::string>& words, const ProgramOptions& options = {});

}  // namespace kestrav
