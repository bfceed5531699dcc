#include "tests/sandbox/PasswordAgent.h"

#include <poll.h>
#include <stdexcept>
#include <unistd.h>

namespace kestrav {

PasswordAgent::PasswordAgent(pid_t subject, uid_t uid) {
    int ready[2];
    if (::pipe(ready) != 0) throw std::runtime_error("no pipe");
    const UniqueFd readyEnd(ready[0]);
    UniqueFd agentsEnd(::dup2(ready[1], 100));
    ::close(ready[1]);
    terminal_.emplace(std::vector<std::string>{"/usr/bin/pkttyagent", "--process", std::to_string(subject),
                                               "--notify-fd", std::to_string(agentsEnd.get())},
                      uid, agentsEnd.get());
    agentsEnd.reset();
    pollfd wait{readyEnd.get(), POLLIN, 0};
    // Closed by the agent once it is registered, or by its end.
    if (::poll(&wait, 1, 10'000) != 1 || !terminal_->runs()) throw std::runtime_error("no agent");
}

}  // namespace kestrav
