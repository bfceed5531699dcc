#pragma once

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "tests/signalOne.h"

namespace kestrav {

/// A process that does `begin` and then waits to be ended.
class Bystander {
  public:
    explicit Bystander(const std::function<bool()>& begin) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) std::abort();
        const UniqueFd ready(ends[0]);
        pid_ = ::fork();
        if (pid_ == 0) {
            const char done = begin() ? 'y' : 'n';
            if (::write(ends[1], &done, 1) != 1) ::_exit(1);
            while (true)
                ::pause();
        }
        ::close(ends[1]);
        char done = 'n';
        began_ = ::read(ready.get(), &done, 1) == 1 && done == 'y';
    }
    ~Bystander() {
        signalOne(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    Bystander(const Bystander&) = delete;
    Bystander& operator=(const Bystander&) = delete;

    bool began() const { return began_; }
    std::string shownName() const { return "kernel_test (" + std::to_string(pid_) + ")"; }

  private:
    pid_t pid_;
    bool began_ = false;
};

}  // namespace kestrav
