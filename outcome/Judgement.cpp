#include "outcome/Judgement.h"

#include "base/stopProcess.h"

namespace kestrav {

Judgement::Kind Judgement::kind() const {
    switch (finding) {
        case Finding::verified:
        case Finding::blocksCame:
            return Kind::confirmed;
        case Finding::cannotConnect:
        case Finding::noDescriptorLeft:
        case Finding::notRunning:
        case Finding::notAcceptedInTime:
        case Finding::notSent:
            return Kind::notHandedOver;
        case Finding::refused:
        case Finding::failed:
        case Finding::otherLength:
            return Kind::wentWrong;
        case Finding::notVerified:
        case Finding::aboutAnotherWrite:
        case Finding::halfAnAnswer:
        case Finding::strangersAnswer:
        case Finding::noReplyInTime:
        case Finding::closedWithoutAReply:
        case Finding::requestFailed:
        case Finding::strangerListens:
            return Kind::nobodyKnows;
    }
    stopProcess();
}

}  // namespace kestrav
