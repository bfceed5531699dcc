#include "app/endingOf.h"

#include "base/stopProcess.h"
#include "outcome/judgeExchange.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

using Finding = Judgement::Finding;

UpdateEnding ofNothingHandedOver(const UpdateFacts& facts) {
    if (facts.isImageEmpty) return UpdateEnding::imageEmpty;
    if (!facts.isRegistryReached) return UpdateEnding::registryOutOfReach;
    return facts.isAccessoryFound ? UpdateEnding::notHandedOver : UpdateEnding::noAccessory;
}

UpdateEnding ofVerified(const Request& request) {
    if (request.firstBlock != kFirmwareBlock) return UpdateEnding::iconArrived;
    const bool fits = request.bytes <= kFirmwareAreaBytes;
    return fits ? UpdateEnding::firmwareArrived : UpdateEnding::firmwareArrivedInIcon;
}

UpdateEnding ofRefused(const UpdateFacts& facts) {
    if (!facts.isAccessoryThere) return UpdateEnding::accessoryUnplugged;
    return facts.hasDisk ? UpdateEnding::refused : UpdateEnding::noDiskYet;
}

/// `withoutBoard` is what is so where the board says nothing.
UpdateEnding ofSilence(const std::optional<WriteWatch::End>& board, UpdateEnding withoutBoard) {
    if (!board) return withoutBoard;
    switch (*board) {
        case WriteWatch::End::wrote:
            return UpdateEnding::boardSaysArrived;
        case WriteWatch::End::refused:
            return UpdateEnding::boardSaysRefused;
        case WriteWatch::End::failed:
            return UpdateEnding::boardSaysFailed;
        case WriteWatch::End::died:
            return UpdateEnding::serviceDied;
        case WriteWatch::End::unknown:
            return withoutBoard;
    }
    stopProcess();
}

}  // namespace

UpdateEnding endingOf(const UpdateFacts& facts) {
    if (!facts.write) return ofNothingHandedOver(facts);
    switch (judgeExchange(*facts.write, facts.request).finding) {
        case Finding::verified:
            return ofVerified(facts.request);
        case Finding::refused:
            return ofRefused(facts);
        case Finding::failed:
            return facts.isAccessoryThere ? UpdateEnding::failed : UpdateEnding::unpluggedInTheMiddle;
        case Finding::otherLength:
            return UpdateEnding::imageChanged;
        case Finding::notVerified:
            return UpdateEnding::notReadBack;
        case Finding::aboutAnotherWrite:
            return UpdateEnding::otherWrite;
        case Finding::halfAnAnswer:
            return UpdateEnding::halfAnAnswer;
        case Finding::blocksCame:
        case Finding::strangersAnswer:
        case Finding::strangerListens:
            return UpdateEnding::strangersAnswer;
        case Finding::cannotConnect:
            return UpdateEnding::cannotConnect;
        case Finding::noDescriptorLeft:
            return UpdateEnding::noDescriptorLeft;
        case Finding::notRunning:
            return UpdateEnding::notRunning;
        case Finding::notAcceptedInTime:
            return UpdateEnding::notAcceptedInTime;
        case Finding::notSent:
            return UpdateEnding::notSent;
        case Finding::noReplyInTime:
            return ofSilence(facts.board, UpdateEnding::noAnswerInTime);
        case Finding::closedWithoutAReply:
        case Finding::requestFailed:
            return ofSilence(facts.board, UpdateEnding::serviceGone);
    }
    stopProcess();
}

}  // namespace kestrav
