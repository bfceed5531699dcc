#include "services/asker/SocketAsker.h"

#include <array>
#include <unistd.h>

#include "services/asker/couldDoItself.h"
#include "services/asker/processHolding.h"

namespace kestrav {

Outcome<ConsentSubject> SocketAsker::subject() {
    const auto asking = process();
    if (!asking) return asking.problem();
    return ConsentSubject(asking.value());
}

Outcome<void> SocketAsker::couldDoItself(const ConsentSubject& subject) {
    const auto& asking = std::get<AskingProcess>(subject);
    if (auto could = kestrav::couldDoItself(asking.pid, identity_.uid); !could) return could;
    const auto now = process();
    if (!now) return now.problem();
    if (now.value() != asking) return refused("the connection passed to another process.");
    return {};
}

bool SocketAsker::stillWants() {
    const auto now = peerIdentity(connection_);
    return now && now.value() == identity_;
}

Outcome<AskingProcess> SocketAsker::process() const {
    if (service_ == 0) return processHolding(identity_);
    return processHolding(identity_, std::array{service_, ::getpid()});
}

}  // namespace kestrav
