#pragma once

#include <functional>
#include <optional>
#include <sys/types.h>

#include "base/UniqueFd.h"
#include "services/gate/GateAnswer.h"

namespace kestrav {

class Asker;
class Gate;
class Request;

/// One request in a process of its own: it reads the request, has the gate obtain consent, waits to be told to begin,
/// has the gate do the work and ends. So a prompt, a long write or a crash holds nobody else up. It takes no notice of
/// the signals that end a service, and once it has begun it outlives the service's process.
class JobProcess {
  public:
    /// Forks; `pid` is negative when there is no process, and errno says why. `request` and `gate` are used there.
    JobProcess(Request& request, Gate& gate);
    JobProcess(JobProcess&&) = default;

    pid_t pid() const { return pid_; }
    /// Readable when the process has something to say.
    int fd() const { return channel_.get(); }

    /// Takes what the process says. True when it asks to begin.
    bool listen();
    /// Lets it begin. From then on it isn't to be ended any more.
    void begin();
    bool begun() const { return begun_; }
    /// Tells it that it will never be told to begin: it gives up a question for consent, and ends.
    void giveUp() const;
    /// Ends one that has not begun anything.
    void kill() const;
    /// Its answer; nothing if it ended without one.
    const std::optional<GateAnswer>& answer() const { return answer_; }

  private:
    pid_t pid_ = -1;
    UniqueFd channel_;
    bool begun_ = false;
    std::optional<GateAnswer> answer_;
};

}  // namespace kestrav
