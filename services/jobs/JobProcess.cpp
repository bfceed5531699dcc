#include "services/jobs/JobProcess.h"

#include <array>
#include <csignal>
#include <exception>
#include <string_view>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>
#include <variant>

#include "base/retry.h"
#include "base/shownText.h"
#include "services/gate/Gate.h"
#include "services/gate/answerFor.h"
#include "services/gate/shownCommandLine.h"
#include "services/jobs/AskerOfJob.h"
#include "services/jobs/Request.h"
#include "services/jobs/ToJob.h"
#include "services/jobs/blockEndingSignals.h"
#include "services/jobs/say.h"

namespace kestrav {
namespace {

GateAnswer carriedOut(Request& request, AskerOfJob& asker, Gate& gate) {
    const auto asked = request.read();
    if (!asked) return {GateAnswer::Kind::denied, answerFor(asked.problem())};
    const auto parsed = parsePrivilegedRequest(asked.value().command, asked.value().arguments);
    asker.isAskedFor(shownCommandLine({}, asked.value().command, asked.value().arguments));
    if (parsed && std::holds_alternative<WriteRequest>(parsed.value())) asker.keepAwakeOnceBegun();
    return gate.perform(asker, asked.value().command, asked.value().arguments);
}

FromJob wordFor(GateAnswer::Kind kind) {
    switch (kind) {
        case GateAnswer::Kind::answered:
            return FromJob::answered;
        case GateAnswer::Kind::denied:
            return FromJob::denied;
        case GateAnswer::Kind::notBegun:
            break;
    }
    return FromJob::notBegun;
}

/// Nothing where the message is no answer.
std::optional<GateAnswer::Kind> kindOf(FromJob word) {
    switch (word) {
        case FromJob::answered:
            return GateAnswer::Kind::answered;
        case FromJob::denied:
            return GateAnswer::Kind::denied;
        case FromJob::notBegun:
            return GateAnswer::Kind::notBegun;
        case FromJob::wantsToAsk:
        case FromJob::hasAsked:
        case FromJob::wasDenied:
        case FromJob::wantsToBegin:
        case FromJob::failed:
            break;
    }
    return std::nullopt;
}

GateAnswer answerIn(GateAnswer::Kind kind, std::string_view text) {
    const std::size_t end = kind == GateAnswer::Kind::denied ? text.find('\0') : std::string_view::npos;
    if (end == std::string_view::npos) return {kind, std::string(text), {}};
    return {kind, std::string(text.substr(0, end)), std::string(text.substr(end + 1))};
}

/// Memory may be what is missing, and nothing can be said then.
[[noreturn]] void endFor(int channel, const char* reason) noexcept {
    try {
        say(channel, FromJob::failed, shownText(reason));
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): nowhere is left to say it
    }
    ::_exit(1);
}

[[noreturn]] void runInChild(int channel, pid_t parent, Request& request, Gate& gate) {
    // Nothing begins for a service that is gone.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(1);
    ignoreEndingSignals();
    try {
        request.leaveService();
        AskerOfJob asker(request, channel);
        const GateAnswer answer = carriedOut(request, asker, gate);
        const bool isDenied = answer.kind == GateAnswer::Kind::denied;
        say(channel, wordFor(answer.kind), isDenied ? answer.text + '\0' + answer.asked : answer.text);
    } catch (const std::exception& error) {
        // The service answers; its own way of ending is not for this process.
        endFor(channel, error.what());
    } catch (...) {
        endFor(channel, "an unknown exception");
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

std::vector<JobProcess::Message> JobProcess::listen() {
    std::array<char, kLongestAnswer + 2> bytes;  // NOLINT: only what recv() wrote is looked at
    std::vector<Message> messages;
    while (true) {
        const ssize_t got = retry([&] { return ::recv(channel_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT); });
        isSilent_ = got == 0;
        if (got <= 0) return messages;
        const auto word = static_cast<FromJob>(bytes[0]);
        const std::string_view text(bytes.data() + 1, static_cast<std::size_t>(got) - 1);
        if (const auto kind = kindOf(word)) {
            answer_ = answerIn(*kind, text);
        } else if (word == FromJob::failed) {
            trouble_ = text;
        } else {
            messages.push_back({word, std::string(text)});
        }
    }
}

void JobProcess::letAsk() const {
    say(channel_.get(), ToJob::ask);
}

void JobProcess::denyAsking(const std::string& sentence) const {
    say(channel_.get(), ToJob::doNotAsk, sentence);
}

void JobProcess::tellLate() const {
    say(channel_.get(), ToJob::late);
}

void JobProcess::begin() {
    begun_ = true;
    say(channel_.get(), ToJob::begin);
}

void JobProcess::giveUp() const {
    ::shutdown(channel_.get(), SHUT_WR);
}

void JobProcess::kill() const {
    // A negative number would mean every process there is.
    if (pid_ > 0) ::kill(pid_, SIGKILL);
}

}  // namespace kestrav
