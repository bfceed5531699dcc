#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

#include "base/UniqueFd.h"
#include "services/gate/GateAnswer.h"
#include "services/jobs/FromJob.h"

namespace kestrav {

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

    struct Message {
        FromJob word;
        std::string text;
    };
    /// Takes what the process says; its answer is not among it.
    std::vector<Message> listen();
    /// Lets it have a person asked; or instead denies it, in somebody's sentence.
    void letAsk() const;
    void denyAsking(const std::string& sentence) const;
    /// Tells it that its request was answered, since nobody agreed in time.
    void tellLate() const;
    /// Lets it begin. From then on it isn't to be ended any more.
    void begin();
    bool begun() const { return begun_; }
    /// Tells it that it will never be told to begin: it gives up a question for consent, and ends.
    void giveUp() const;
    /// Ends one that has not begun anything.
    void kill() const;
    /// Whether it will never say anything more.
    bool isSilent() const { return isSilent_; }
    /// Its answer; nothing if it ended without one.
    const std::optional<GateAnswer>& answer() const { return answer_; }
    /// What nobody foresaw and kept it from an answer, as far as it could tell; in one harmless line.
    const std::string& trouble() const { return trouble_; }

  private:
    pid_t pid_ = -1;
    UniqueFd channel_;
    bool begun_ = false;
    bool isSilent_ = false;
    std::optional<GateAnswer> answer_;
    std::string trouble_;
};

}  // namespace kestrav
