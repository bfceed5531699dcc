#include "base/runChild.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/EndableChild.h"
#include "base/UniqueFd.h"
#include "base/awaitEnd.h"
#include "base/retry.h"
#include "base/systemProblem.h"
#include "base/wordPointers.h"

namespace kestrav {
namespace {

constexpr std::size_t kKeptErrors = 4096;

class SpawnActions {
  public:
    explicit SpawnActions(int standardError) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        ::posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        ::posix_spawn_file_actions_adddup2(&actions_, standardError, STDERR_FILENO);
    }
    ~SpawnActions() { ::posix_spawn_file_actions_destroy(&actions_); }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;
    const posix_spawn_file_actions_t* get() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

/// The child starts with no signal blocked or ignored, whatever this thread does with them.
class SpawnAttributes {
  public:
    SpawnAttributes() {
        ::posix_spawnattr_init(&attributes_);
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        ::posix_spawnattr_setsigmask(&attributes_, &none);
        ::posix_spawnattr_setsigdefault(&attributes_, &all);
        ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    const posix_spawnattr_t* get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

int spawn(const std::vector<std::string>& words, int standardError, pid_t& child) {
    // Its messages are told apart by their words, so they have to come in one language.
    std::array<char, 9> language{"LC_ALL=C"};
    std::array<char, 19> path{"PATH=/usr/bin:/bin"};
    const std::array<char*, 3> environment{language.data(), path.data(), nullptr};
    return ::posix_spawn(&child, words.at(0).c_str(), SpawnActions(standardError).get(), SpawnAttributes().get(),
                         wordPointers(words).data(), environment.data());
}

std::string readToTheEnd(const UniqueFd& fd) {
    std::string kept;
    std::array<char, 1024> part{};
    for (;;) {
        const ssize_t got = retry([&] { return ::read(fd.get(), part.data(), part.size()); });
        if (got <= 0) return kept;
        kept.append(part.data(), std::min(static_cast<std::size_t>(got), kKeptErrors - kept.size()));
    }
}

}  // namespace

Outcome<ChildRun> runChild(const std::vector<std::string>& words, EndableChild* endable) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return systemProblem(errno);
    const UniqueFd readEnd(ends[0]);
    UniqueFd writeEnd(ends[1]);
    pid_t child = -1;
    if (const int error = spawn(words, writeEnd.get(), child); error != 0) return systemProblem(error);
    if (endable != nullptr) endable->begins(child);
    writeEnd.reset();
    ChildRun run;
    run.errors = readToTheEnd(readEnd);
    // Its number may be another process's as soon as its end is taken note of.
    awaitEnd(child);
    if (endable != nullptr) endable->isOver();
    int status = 0;
    const pid_t ended = retry([&] { return ::waitpid(child, &status, 0); });
    if (ended == child && WIFEXITED(status)) run.exitStatus = WEXITSTATUS(status);
    return run;
}

}  // namespace kestrav
