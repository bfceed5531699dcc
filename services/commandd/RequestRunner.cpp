#include "services/commandd/RequestRunner.h"

#include <optional>

#include "base/SystemLog.h"
#include "services/commandd/CommandRequest.h"
#include "services/commandd/Connection.h"
#include "services/privileged/AnswerText.h"
#include "services/privileged/Gate.h"

namespace kestrav {

void RequestRunner::run(int connection, const PeerIdentity& peer, std::string_view request) {
    const std::string who = "user " + std::to_string(peer.uid) + ": ";
    const auto refuse = [&](const Problem& problem) {
        const std::string answer = answerFor(problem);
        log_.write(who + answer);
        sendReply(connection, answer);
    };
    const auto read = readRequest(request);
    if (!read) return refuse(read.problem());
    const auto caller = callerWithUid(peer.uid);
    if (!caller) return refuse(caller.problem());
    // The last moment at which nothing has happened yet. The socket's number is compared as well: another one could
    // have taken its address.
    if (peerIdentity(connection) != std::optional(peer)) {
        log_.write(who + "gone before the request was begun; nothing was done");
        return;
    }
    sendReply(connection, gate_.perform(caller.value(), read.value().command, read.value().arguments));
}

}  // namespace kestrav
