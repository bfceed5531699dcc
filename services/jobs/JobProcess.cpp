#include "services/jobs/JobProcess.h"

#include <array>
#include <csignal>
#include <string_view>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <variant>

#include "base/retry.h"
#include "services/asker/Asker.h"
#include "services/gate/Gate.h"
#include "services/gate/answerFor.h"
#include "services/jobs/Request.h"
#include "services/jobs/blockEndingSignals.h"
#include "services/jobs/endLastForWantOfMemory.h"
#include "services/jobs/keepAwake.h"

namespace kestrav {
namespace {

// Each message's first byte. Of a denial the text goes as far as a NUL, and behind it stands what was asked.
constexpr char kWantsToBegin = 'B';
constexpr char kAnswered = 'A';
constexpr char kDenied = 'R';
constexpr char kNotBegun = 'N';

void say(int channel, char kind, std::string_view text) {
    std::string message(1, kind);
    message += text;
    retry([&] { return ::send(channel, message.data(), message.size(), MSG_NOSIGNAL); });
}

/// Half a write is worse for the accessory than a service that has to be started again, and the disk stays locked until
/// the write is over.
void outliveService() {
    ::prctl(PR_SET_PDEATHSIG, 0);
    endLastForWantOfMemory();
}

/// The request's asker, who wants nothing any more once the service has given the request up.
class AskerOfService final : public Asker {
  public:
    AskerOfService(Asker& asker, int channel) : asker_(asker), channel_(channel) {}

    uid_t uid() const override { return asker_.uid(); }
    Outcome<ConsentSubject> subject() override { return asker_.subject(); }
    Outcome<void> couldDoItself() override { return asker_.couldDoItself(); }
    bool mayBePrompted() const override { return asker_.mayBePrompted(); }
    bool stillWants() override { return !isGivenUp() && asker_.stillWants(); }
    bool mayBegin() override {
        say(channel_, kWantsToBegin, {});
        char byte = 0;
        if (retry([&] { return ::recv(channel_, &byte, 1, 0); }) != 1 || !asker_.mayBegin()) return false;
        outliveService();
        if (writes_) awake_ = keepAwake();
        return true;
    }
    /// What is asked is a write, which a sleep or a shutdown would cut in two.
    void keepAwakeOnceBegun() { writes_ = true; }

  private:
    bool isGivenUp() const {
        char byte = 0;
        return ::recv(channel_, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 0;
    }

    Asker& asker_;
    int channel_;
    bool writes_ = false;
    UniqueFd awake_;
};

GateAnswer carriedOut(Request& request, AskerOfService& asker, Gate& gate) {
    const auto asked = request.read();
    if (!asked) return {GateAnswer::Kind::denied, answerFor(asked.problem())};
    const auto parsed = parsePrivilegedRequest(asked.value().command, asked.value().arguments);
    if (parsed && std::holds_alternative<WriteRequest>(parsed.value())) asker.keepAwakeOnceBegun();
    return gate.perform(asker, asked.value().command, asked.value().arguments);
}

char byteFor(GateAnswer::Kind kind) {
    switch (kind) {
        case GateAnswer::Kind::answered:
            return kAnswered;
        case GateAnswer::Kind::denied:
            return kDenied;
        case GateAnswer::Kind::notBegun:
            break;
    }
    return kNotBegun;
}

GateAnswer::Kind kindOf(char byte) {
    if (byte == kAnswered) return GateAnswer::Kind::answered;
    return byte == kDenied ? GateAnswer::Kind::denied : GateAnswer::Kind::notBegun;
}

GateAnswer answerIn(std::string_view message) {
    const GateAnswer::Kind kind = kindOf(message[0]);
    const std::string_view text = message.substr(1);
    const std::size_t end = kind == GateAnswer::Kind::denied ? text.find('\0') : std::string_view::npos;
    if (end == std::string_view::npos) return {kind, std::string(text), {}};
    return {kind, std::string(text.substr(0, end)), std::string(text.substr(end + 1))};
}

[[noreturn]] void runInChild(int channel, pid_t parent, Request& request, Gate& gate) {
    // Nothing begins for a service that is gone.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(1);
    ignoreEndingSignals();
    try {
        request.leaveService();
        AskerOfService asker(request.asker(), channel);
        const GateAnswer answer = carriedOut(request, asker, gate);
        const bool isDenied = answer.kind == GateAnswer::Kind::denied;
        say(channel, byteFor(answer.kind), isDenied ? answer.text + '\0' + answer.asked : answer.text);
    } catch (...) {
        ::_exit(1);  // the service answers; its own way of ending is not for this process
    }
    ::_exit(0);
}

}  // namespace

JobProcess::JobProcess(Request& request, Gate& gate) {
    std::array<int, 2> ends{};
    // Messages arrive whole on such a pair.
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) return;
    channel_.reset(ends[0]);
    UniqueFd childEnd(ends[1]);
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ != 0) return;
    channel_.reset();
    runInChild(childEnd.get(), parent, request, gate);
}

bool JobProcess::listen() {
    std::array<char, kLongestAnswer + 2> message;  // NOLINT: only what recv() wrote is looked at
    bool asks = false;
    while (true) {
        const ssize_t got = retry([&] { return ::recv(channel_.get(), message.data(), message.size(), MSG_DONTWAIT); });
        if (got <= 0) return asks;
        const std::string_view text(message.data(), static_cast<std::size_t>(got));
        if (text[0] == kWantsToBegin) {
            asks = true;
        } else {
            answer_ = answerIn(text);
        }
    }
}

void JobProcess::begin() {
    begun_ = true;
    retry([&] { return ::send(channel_.get(), "!", 1, MSG_NOSIGNAL); });
}

void JobProcess::giveUp() const {
    ::shutdown(channel_.get(), SHUT_WR);
}

void JobProcess::kill() const {
    // A negative number would mean every process there is.
    if (pid_ > 0) ::kill(pid_, SIGKILL);
}

}  // namespace kestrav
