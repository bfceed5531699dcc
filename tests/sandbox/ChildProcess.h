#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "base/UniqueFd.h"

namespace kestrav {

/// Owns one child process: kills it, if it still runs, and collects it.
class ChildProcess {
  public:
    ChildProcess() = default;
    explicit ChildProcess(pid_t pid) : pid_(pid) {}
    ~ChildProcess() { end(); }
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;

    /// Starts a program that goes on running. `environment` is all of its environment.
    static ChildProcess start(const std::vector<std::string>& words, const std::vector<std::string>& environment = {});

    pid_t pid() const { return pid_; }
    void end();
    /// Waits for its own end; returns its exit status, -N when signal N ended it.
    int wait();
    /// Whether it has not ended yet.
    bool runs() const;

  private:
    pid_t pid_ = -1;
};

/// Makes this process (a fresh child) that user, with that user's groups, for good.
void becomeUser(uid_t uid);

/// A process of another user that waits to be told before it does `task`, and hands back what that returned.
class UserProcess {
  public:
    /// The process is that user's once this is made.
    UserProcess(uid_t uid, const std::function<std::string()>& task);

    pid_t pid() const { return process_.pid(); }
    void go();
    /// Whether the task is over, at the latest after that time.
    bool endsWithin(std::chrono::milliseconds time) const;
    /// Waits for the task's end.
    std::string result();
    void kill() { process_.end(); }

  private:
    UniqueFd go_;
    UniqueFd result_;
    ChildProcess process_;
};

}  // namespace kestrav
