#include "tests/sandbox/runProgram.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/retry.h"
#include "base/wordPointers.h"
#include "tests/sandbox/ChildProcess.h"

namespace kestrav {
namespace {

/// An unnamed temporary file: unlike a pipe, it never makes the program wait.
using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File temporary() {
    return {std::tmpfile(), std::fclose};
}

std::string contents(std::FILE* file) {
    std::rewind(file);
    std::string text;
    std::array<char, 4096> part{};
    for (std::size_t got = 0; (got = std::fread(part.data(), 1, part.size(), file)) > 0;)
        text.append(part.data(), got);
    return text;
}

}  // namespace

ProgramRun runProgram(const std::vector<std::string>& words, const ProgramOptions& options) {
    const File in = temporary();
    const File out = temporary();
    const File err = temporary();
    if (!in || !out || !err) throw std::runtime_error("no temporary files");
    std::fwrite(options.input.data(), 1, options.input.size(), in.get());
    std::fflush(in.get());
    std::rewind(in.get());
    const pid_t child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::dup2(::fileno(in.get()), 0);
        ::dup2(::fileno(out.get()), 1);
        ::dup2(::fileno(err.get()), 2);
        becomeUser(options.uid);
        ::execve(words.at(0).c_str(), wordPointers(words).data(), wordPointers(options.environment).data());
        ::_exit(98);
    }
    int status = 0;
    retry([&] { return ::waitpid(child, &status, 0); });
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), contents(out.get()), contents(err.get())};
}

}  // namespace kestrav
