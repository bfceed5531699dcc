#include "services/commandd/RequestRunner.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <optional>
#include <unistd.h>

#include "services/commandd/CommandRequest.h"
#include "services/commandd/Connection.h"
#include "services/commandd/PeerProcess.h"
#include "services/privileged/AnswerText.h"
#include "services/privileged/CommandLine.h"
#include "services/privileged/Consent.h"
#include "services/privileged/Gate.h"
#include "services/privileged/RequestLog.h"

namespace kestrav {
namespace {

/// The service passes on that it is told to stop; the signals stay blocked, so they only show here.
bool isToldToStop() {
    sigset_t pending;
    if (::sigpending(&pending) != 0) return false;
    constexpr std::array endingSignals{SIGTERM, SIGINT, SIGHUP, SIGQUIT};
    return std::ranges::any_of(endingSignals, [&](int signal) { return ::sigismember(&pending, signal) == 1; });
}

}  // namespace

std::optional<Problem> RequestRunner::whyNot(int connection, const PeerIdentity& peer) {
    // Both could do without us what they ask for.
    if (peer.uid == 0 || peer.uid == ::geteuid()) return std::nullopt;
    const auto process = processHolding(peer);
    if (!process) return process.problem();
    const auto stillWanted = [&] { return !isToldToStop() && peerIdentity(connection) == std::optional(peer); };
    if (auto problem = consent_.refusal(process.value(), true, stillWanted)) return problem;
    // Consent was given for this process; a connection that was passed on meanwhile is somebody else's.
    const auto now = processHolding(peer);
    if (!now) return now.problem();
    if (now.value() != process.value()) return refused("the connection passed to another process.");
    return std::nullopt;
}

void RequestRunner::run(int connection, const PeerIdentity& peer, std::string_view request) {
    const std::string who = "user " + std::to_string(peer.uid) + ": ";
    const auto refuse = [&](const Problem& problem) {
        const std::string answer = answerFor(problem);
        log_.refused(peer.uid, who + answer);
        sendReply(connection, answer);
    };
    const auto read = readRequest(request);
    if (!read) return refuse(read.problem());
    const auto caller = callerWithUid(peer.uid);
    if (!caller) return refuse(caller.problem());
    // Nobody is asked for a password over something that the gate refuses anyway.
    if (parseCommandLine(read.value().command, read.value().arguments)) {
        if (const auto problem = whyNot(connection, peer)) return refuse(*problem);
    }
    // The last moment at which nothing has happened yet. The socket's number is compared as well: another one could
    // have taken its address.
    if (peerIdentity(connection) != std::optional(peer)) {
        log_.refused(peer.uid, who + "gone before the request was begun; nothing was done");
        return;
    }
    sendReply(connection, gate_.perform(caller.value(), read.value().command, read.value().arguments));
}

}  // namespace kestrav
