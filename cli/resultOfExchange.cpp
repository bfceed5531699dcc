#include "cli/resultOfExchange.h"

#include <string>
#include <utility>

#include "base/stopProcess.h"
#include "outcome/judgeExchange.h"
#include "protocol/accessory.h"
#include "protocol/wire.h"

namespace kestrav {
namespace {

using Finding = Judgement::Finding;

constexpr const char* kSeeTheEnd = "Don't unplug the accessory: 'journalctl -t kestrav-commandd' tells the end.";

std::string findTheListener() {
    return "'ss -tlnpe sport = :" + std::to_string(kServicePort) + "' names the program.";
}

ExitCode exitCodeOf(Judgement::Kind kind) {
    switch (kind) {
        case Judgement::Kind::confirmed:
            return ExitCode::success;
        case Judgement::Kind::notHandedOver:
            return ExitCode::failure;
        case Judgement::Kind::wentWrong:
            return ExitCode::wentWrong;
        case Judgement::Kind::nobodyKnows:
            return ExitCode::nobodyKnows;
    }
    stopProcess();
}

/// Puts a judgement about one request into words.
class Speaker {
  public:
    Speaker(const UpdateResult& asked, Judgement judgement, bool writes)
        : asked_(asked),
          judgement_(std::move(judgement)),
          writes_(writes) {
        asked_.status = exitCodeOf(judgement_.kind());
        asked_.verified = judgement_.finding == Finding::verified;
    }

    UpdateResult result() const {
        switch (judgement_.finding) {
            case Finding::verified:
                return ofVerified();
            case Finding::blocksCame:
                return saying("");
            case Finding::refused:
                return saying((writes_ ? "Nothing was written: " : "Nothing was read: ") + judgement_.detail);
            case Finding::failed:
                return saying((writes_ ? "The update failed: " : "Reading failed: ") + judgement_.detail);
            case Finding::otherLength:
                return ofOtherLength();
            case Finding::notVerified:
                return ofNotVerified();
            case Finding::aboutAnotherWrite:
                return saying("The answer is about another write, so nobody knows what the accessory holds.",
                              "Send the image again.");
            case Finding::halfAnAnswer:
                return seenLater("Only a part of the service's answer came");
            case Finding::noReplyInTime:
                return seenLater("The service has not answered in time");
            case Finding::closedWithoutAReply:
            case Finding::requestFailed:
                return sentAgain("The service has gone without an answer");
            case Finding::strangersAnswer:
            case Finding::strangerListens:
                return ofStranger();
            case Finding::cannotConnect:
            case Finding::noDescriptorLeft:
            case Finding::notRunning:
            case Finding::notAcceptedInTime:
            case Finding::notSent:
                return ofNotHandedOver();
        }
        stopProcess();
    }

  private:
    UpdateResult saying(std::string what, std::string whatToDo = {}) const {
        return asked_.endedWith(asked_.status, std::move(what), std::move(whatToDo));
    }
    UpdateResult seenLater(const std::string& what) const {
        return saying(what + consequence(), writes_ ? kSeeTheEnd : "Try again.");
    }
    UpdateResult sentAgain(const std::string& what) const {
        return saying(what + consequence(), writes_ ? "Send the image again." : "Try again.");
    }
    std::string consequence() const {
        return writes_ ? ", so nobody knows what the accessory holds." : ", so nothing was read.";
    }
    std::string written() const { return std::to_string(judgement_.written) + " bytes"; }
    bool reachesIntoTheIcon() const { return asked_.firstBlock == kFirmwareBlock && asked_.bytes > kFirmwareAreaBytes; }

    UpdateResult ofVerified() const {
        return saying("The image is on " + asked_.disk + ": " + written() + " from block " +
                          std::to_string(asked_.firstBlock) + " on, read back and equal.",
                      reachesIntoTheIcon() ? "It reaches into the icon area: send the icon again, too." : "");
    }
    UpdateResult ofOtherLength() const {
        return saying("The image changed meanwhile: it had " + std::to_string(asked_.bytes) + " bytes, and " +
                          written() + " were written.",
                      "Send it again.");
    }
    UpdateResult ofNotVerified() const {
        return saying("The " + written() +
                          " were written, but could not be read back from the disk itself, so nobody knows "
                          "whether it has kept them.",
                      "Unplug the accessory, plug it in again and send the image once more.");
    }
    UpdateResult ofStranger() const {
        if (judgement_.finding == Finding::strangerListens) return saying(judgement_.detail, findTheListener());
        return saying("What answers on port " + std::to_string(kServicePort) +
                          " is not kestrav-commandd: Prometheus and Cockpit use that port, too.",
                      findTheListener());
    }
    UpdateResult ofNotHandedOver() const {
        if (judgement_.finding == Finding::notRunning)
            return saying("The service is not running:", "systemctl start kestrav-commandd.socket");
        if (judgement_.finding == Finding::notAcceptedInTime)
            return saying("The service does not take the request:", "systemctl restart kestrav-commandd");
        if (judgement_.finding == Finding::notSent)
            return saying("The connection broke before the service had the request, so nothing was done.",
                          "Try again.");
        if (judgement_.finding == Finding::noDescriptorLeft)
            return saying("Too many files are open for a connection to the service, so nothing was handed over.",
                          "'ulimit -n' shows how many there may be: raise it, or do fewer things at once.");
        return saying("The service can't be reached, so nothing was handed over.", "Is the loopback interface up?");
    }

    UpdateResult asked_;
    Judgement judgement_;
    bool writes_;
};

}  // namespace

UpdateResult resultOfExchange(const ServiceAnswers::Exchange& exchange, const UpdateResult& asked) {
    UpdateResult result = asked;
    const auto* given = std::get_if<ServiceAnswers::Given>(&exchange.end);
    if (given != nullptr && given->isText()) result.answer = given->bytes;
    const Judgement judgement = judgeExchange(exchange, {asked.disk, asked.firstBlock, asked.bytes});
    return Speaker(result, judgement, exchange.question.kind != AnswerTo::Kind::read).result();
}

}  // namespace kestrav
