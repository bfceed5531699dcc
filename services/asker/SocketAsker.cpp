#include "services/asker/SocketAsker.h"

#include "services/asker/couldDoItself.h"
#include "services/asker/processHolding.h"

namespace kestrav {

Outcome<ConsentSubject> SocketAsker::subject() {
    const auto process = processHolding(identity_);
    if (!process) return process.problem();
    return ConsentSubject(process.value());
}

Outcome<void> SocketAsker::couldDoItself(const ConsentSubject& subject) {
    const auto& process = std::get<AskingProcess>(subject);
    if (auto could = kestrav::couldDoItself(process.pid, identity_.uid); !could) return could;
    const auto now = processHolding(identity_);
    if (!now) return now.problem();
    if (now.value() != process) return refused("the connection passed to another process.");
    return {};
}

bool SocketAsker::stillWants() {
    const auto now = peerIdentity(connection_);
    return now && now.value() == identity_;
}

}  // namespace kestrav
