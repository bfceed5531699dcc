#pragma once

#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "base/UniqueFd.h"

namespace kestrav {

class Consent;
class Gate;

/// One request of one caller.
struct HelperRequest {
    std::string sender;  ///< its unique name on the bus
    uid_t uid = 0;
    bool mayInteract = false;
    std::string cmd;
    std::vector<std::string> arguments;
};

/// What came of it.
struct HelperAnswer {
    bool refused = false;  ///< the caller may not ask
    std::string text;
};

/// A request in a process of its own: it obtains consent, waits to be told to begin, does the work and ends. So a
/// prompt, a long write or a crash holds nobody else up.
class JobProcess {
  public:
    /// Forks; `pid` is negative when that fails. `consent` and `gate` are used in the new process, which closes its
    /// copy of `busFd`.
    JobProcess(const HelperRequest& request, int busFd, Consent& consent, Gate& gate);
    JobProcess(const JobProcess&) = delete;
    JobProcess& operator=(const JobProcess&) = delete;

    pid_t pid() const { return pid_; }
    /// Readable when the process has something to say.
    int fd() const { return channel_.get(); }

    /// Takes what the process says. True when it asks to begin.
    bool listen();
    /// Lets it begin. From then on it isn't to be ended any more.
    void begin();
    bool begun() const { return begun_; }
    /// Ends it before it has begun anything.
    void cancel() const;
    /// Its answer; nothing if it ended without one.
    const std::optional<HelperAnswer>& answer() const { return answer_; }

  private:
    pid_t pid_ = -1;
    UniqueFd channel_;
    bool begun_ = false;
    std::optional<HelperAnswer> answer_;
};

}  // namespace kestrav
