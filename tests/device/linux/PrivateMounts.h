#pragma once

#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrav {

/// Runs `work` in a child process whose mounts are its own, so that nothing of the machine's is touched, and returns
/// its result, an exit status; -1 if the child ended otherwise and -2 if it may not have mounts of its own. Whatever
/// else keeps it from having them is a result of 1: nobody is to take a fault for a want of rights.
template <typename Work>
int withPrivateMounts(Work work) {
    // No exit status: each of them may be the work's own, or that of a program it runs.
    constexpr int kRefused = SIGUSR1;
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isolated =
            ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
        if (isolated) ::_exit(work());
        if (errno == EPERM) {
            ::signal(kRefused, SIG_DFL);
            ::raise(kRefused);
        }
        ::_exit(1);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) return -1;
    if (WIFSIGNALED(status) && WTERMSIG(status) == kRefused) return -2;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace kestrav
