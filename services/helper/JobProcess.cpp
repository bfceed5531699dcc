#include "services/helper/JobProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <string_view>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "services/privileged/AnswerText.h"
#include "services/privileged/Caller.h"
#include "services/privileged/CommandLine.h"
#include "services/privileged/Consent.h"
#include "services/privileged/Gate.h"

namespace kestrav {
namespace {

// Each message's first byte.
constexpr char wantsToBegin = 'B';
constexpr char isRefused = 'R';
constexpr char isAnswered = 'A';

void say(int channel, char kind, std::string_view text) {
    std::string message(1, kind);
    message += text;
    while (::send(channel, message.data(), message.size(), MSG_NOSIGNAL) < 0 && errno == EINTR) {
    }
}

/// Waits for the word to begin; false when it does not come any more.
bool isToldToBegin(int channel) {
    char byte = 0;
    ssize_t got = -1;
    do {
        got = ::recv(channel, &byte, 1, 0);
    } while (got < 0 && errno == EINTR);
    return got == 1;
}

std::optional<Problem> whyNot(const HelperRequest& request, Consent& consent) {
    // Nobody is asked for a password over something that the gate refuses anyway.
    if (!parseCommandLine(request.cmd, request.arguments)) return std::nullopt;
    // Root needs no consent, and neither does the user that this service runs as: both could do it without us.
    if (request.uid == 0 || request.uid == ::geteuid()) return std::nullopt;
    // The service kills this process when the caller leaves.
    return consent.refusal(AskingBusName{request.sender}, request.mayInteract, [] { return true; });
}

void work(int channel, const HelperRequest& request, Consent& consent, Gate& gate) {
    const auto caller = callerWithUid(request.uid);
    if (!caller) return say(channel, isRefused, answerFor(caller.problem()));
    if (const auto problem = whyNot(request, consent)) return say(channel, isRefused, answerFor(*problem));
    say(channel, wantsToBegin, {});
    if (!isToldToBegin(channel)) return;
    say(channel, isAnswered, gate.perform(caller.value(), request.cmd, request.arguments));
}

[[noreturn]] void runInChild(int channel, pid_t parent, const HelperRequest& request, Consent& consent, Gate& gate) {
    // A service that is killed stops writing as a whole: what comes after it finds no disk in use.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(1);
    // A service manager's signal reaches the whole group; a write that was begun ends first.
    ::signal(SIGTERM, SIG_IGN);
    ::signal(SIGINT, SIG_IGN);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    work(channel, request, consent, gate);
    ::_exit(0);
}

}  // namespace

JobProcess::JobProcess(const HelperRequest& request, int busFd, Consent& consent, Gate& gate) {
    int ends[2];
    // Messages arrive whole on such a pair.
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return;
    channel_.reset(ends[0]);
    UniqueFd childEnd(ends[1]);
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ != 0) return;
    // A connection stays up as long as anybody holds it, and this process would hold the service's.
    ::close(busFd);
    channel_.reset();
    runInChild(childEnd.get(), parent, request, consent, gate);
}

bool JobProcess::listen() {
    std::array<char, longestAnswer + 2> message;  // NOLINT: only what recv() wrote is looked at
    bool asks = false;
    for (;;) {
        const ssize_t got = ::recv(channel_.get(), message.data(), message.size(), MSG_DONTWAIT);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return asks;
        const std::string_view text(message.data(), static_cast<std::size_t>(got));
        if (text[0] == wantsToBegin) {
            asks = true;
        } else {
            answer_ = HelperAnswer{text[0] == isRefused, std::string(text.substr(1))};
        }
    }
}

void JobProcess::begin() {
    begun_ = true;
    while (::send(channel_.get(), "!", 1, MSG_NOSIGNAL) < 0 && errno == EINTR) {
    }
}

void JobProcess::cancel() const {
    // A negative number would mean every process there is.
    if (pid_ > 0) ::kill(pid_, SIGKILL);
}

}  // namespace kestrav
