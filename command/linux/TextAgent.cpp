#include "command/linux/TextAgent.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <systemd/sd-login.h>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "base/openSystemBus.h"
#include "base/retry.h"

namespace kestrav {
namespace {

constexpr const char* kAgent = KESTRAV_PKTTYAGENT;
constexpr int kReadyFd = 3;

/// Whether polkit sees this process in a login session: in the one it was started in, or in its user's desktop.
bool belongsToASession() {
    char* session = nullptr;
    if (sd_pid_get_session(0, &session) < 0) {
        uid_t owner = 0;
        if (sd_pid_get_owner_uid(0, &owner) < 0 || sd_uid_get_display(owner, &session) < 0) return false;
    }
    std::free(session);
    return true;
}

pid_t start(const UniqueFd& ready) {
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ready.get(), kReadyFd);
    const std::string process = std::to_string(::getpid());
    const std::string readyFd = std::to_string(kReadyFd);
    // --fallback: a desktop's own prompt, where there is one, is the better one. polkit looks for neither of the two
    // outside of a session, so there the agent has to be the one.
    const std::array<const char*, 7> words{kAgent,        "--process",     process.c_str(),
                                           "--notify-fd", readyFd.c_str(), belongsToASession() ? "--fallback" : nullptr,
                                           nullptr};
    pid_t child = -1;
    const int error = ::posix_spawn(&child, kAgent, &actions, nullptr, const_cast<char* const*>(words.data()), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? child : -1;
}

}  // namespace

TextAgent::TextAgent() {
    if (::geteuid() == 0 || ::isatty(STDIN_FILENO) == 0) return;
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return;
    const UniqueFd readEnd(ends[0]);
    // A copy with a number of its own: handing 3 over as 3 would leave it to be closed.
    UniqueFd writeEnd(::fcntl(ends[1], F_DUPFD_CLOEXEC, kReadyFd + 1));
    ::close(ends[1]);
    agent_ = start(writeEnd);
    writeEnd.reset();
    pollfd ready{readEnd.get(), POLLIN, 0};
    // The agent closes it once it is registered, a few milliseconds later as a rule; its end closes it as well.
    constexpr std::chrono::milliseconds kPatience = kAnswerPatience;
    retry([&] { return ::poll(&ready, 1, static_cast<int>(kPatience.count())); });
}

TextAgent::~TextAgent() {
    if (agent_ <= 0) return;
    ::kill(agent_, SIGTERM);
    retry([this] { return ::waitpid(agent_, nullptr, 0); });
}

}  // namespace kestrav
