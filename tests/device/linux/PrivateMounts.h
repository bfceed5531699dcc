#pragma once

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrav {

/// Runs `work` in a child process whose mounts are its own, so that nothing of the machine's is touched, and returns
/// its result, an exit status; -1 if the child ended otherwise and -2 if it may not have mounts of its own.
template <typename Work>
int withPrivateMounts(Work work) {
    constexpr int refused = 125;
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isolated =
            ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
        ::_exit(isolated ? work() : refused);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status) == refused ? -2 : WEXITSTATUS(status);
}

}  // namespace kestrav
