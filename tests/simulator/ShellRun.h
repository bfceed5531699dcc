#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <sys/wait.h>

namespace kestrav {

/// What a shell line printed, and the exit status that a shell would see.
struct ShellRun {
    int status = -1;
    std::string output;

    explicit ShellRun(const std::string& line) {
        FILE* pipe = ::popen(line.c_str(), "r");
        if (pipe == nullptr) return;
        char buffer[4096];
        while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, pipe))
            output.append(buffer, count);
        const int ended = ::pclose(pipe);
        status = WIFEXITED(ended) ? WEXITSTATUS(ended) : 128 + WTERMSIG(ended);
    }
};

}  // namespace kestrav
