#include "cli/judgeExchange.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "base/stopProcess.h"
#include "base/utf8.h"
#include "protocol/accessory.h"
#include "protocol/wire.h"

namespace kestrav {
namespace {

constexpr const char* kSeeTheEnd = "Don't unplug the accessory: 'journalctl -t kestrav-commandd' tells the end.";

std::string findTheListener() {
    return "'ss -tlnpe sport = :" + std::to_string(kServicePort) + "' names the program.";
}

/// Whether it is the beginning of something that the service says.
bool isHalfOfOurs(std::string_view answer) {
    constexpr std::array kPrefixes{kWrotePrefix, kUnmountedPrefix, kRefusedPrefix, kFailedPrefix};
    return std::ranges::any_of(kPrefixes, [&](std::string_view prefix) {
        const std::size_t common = std::min(prefix.size(), answer.size());
        return answer.substr(0, common) == prefix.substr(0, common);
    });
}

class Judge {
  public:
    Judge(const UpdateResult& asked, AnswerTo question)
        : asked_(asked),
          writes_(question.kind != AnswerTo::Kind::read) {}

    UpdateResult of(const ServiceAnswers::Given& given) {
        if (given.isText()) asked_.answer = given.bytes;
        const Answer& answer = given.answer;
        switch (answer.meaning) {
            case Answer::Meaning::wroteAndVerified:
            case Answer::Meaning::wroteAndNotVerified:
                return ofWritten(answer);
            case Answer::Meaning::refused:
                return endedWith(ExitCode::wentWrong,
                                 (writes_ ? "Nothing was written: " : "Nothing was read: ") + answer.problem);
            case Answer::Meaning::failed:
                return endedWith(ExitCode::wentWrong,
                                 (writes_ ? "The update failed: " : "Reading failed: ") + answer.problem);
            case Answer::Meaning::blocks:
                return endedWith(ExitCode::success, "");
            case Answer::Meaning::unmounted:
            case Answer::Meaning::wasNotMounted:
            case Answer::Meaning::notOurs:
                return ofStranger(given);
        }
        stopProcess();
    }

    UpdateResult of(const Unanswered& unanswered) const {
        switch (unanswered.why) {
            case Unanswered::Why::hostNotFound:
            case Unanswered::Why::connectingFailed:
                return endedWith(ExitCode::failure, "The service can't be reached, so nothing was handed over.",
                                 "Is the loopback interface up?");
            case Unanswered::Why::notAccepted:
                return endedWith(ExitCode::failure,
                                 "The service is not running:", "systemctl start kestrav-commandd.socket");
            case Unanswered::Why::notAcceptedInTime:
                return endedWith(ExitCode::failure,
                                 "The service does not take the request:", "systemctl restart kestrav-commandd");
            case Unanswered::Why::notSent:
                return endedWith(ExitCode::failure,
                                 "The connection broke before the service had the request, so nothing was done.",
                                 "Try again.");
            case Unanswered::Why::noReplyInTime:
                return endedWith(ExitCode::nobodyKnows,
                                 std::string("The service has not answered in time") + consequence(),
                                 writes_ ? kSeeTheEnd : "Try again.");
            case Unanswered::Why::closedWithoutAReply:
            case Unanswered::Why::requestFailed:
                return endedWith(ExitCode::nobodyKnows,
                                 std::string("The service has gone without an answer") + consequence(),
                                 writes_ ? "Send the image again." : "Try again.");
            case Unanswered::Why::notTheService:
                return endedWith(ExitCode::nobodyKnows, unanswered.sentence, findTheListener());
        }
        stopProcess();
    }

  private:
    UpdateResult endedWith(ExitCode code, std::string what, std::string whatToDo = {}) const {
        return asked_.endedWith(code, std::move(what), std::move(whatToDo));
    }

    std::string consequence() const {
        return writes_ ? ", so nobody knows what the accessory holds." : ", so nothing was read.";
    }

    UpdateResult ofWritten(const Answer& answer) {
        const bool isAboutThis = answer.disk == asked_.disk && std::cmp_equal(answer.firstBlock, asked_.firstBlock);
        if (!isAboutThis) {
            return endedWith(ExitCode::nobodyKnows,
                             "The answer is about another write, so nobody knows what the accessory holds.",
                             "Send the image again.");
        }
        const std::string written = std::to_string(answer.bytes) + " bytes";
        if (!std::cmp_equal(answer.bytes, asked_.bytes)) {
            return endedWith(ExitCode::wentWrong,
                             "The image changed meanwhile: it had " + std::to_string(asked_.bytes) + " bytes, and " +
                                 written + " were written.",
                             "Send it again.");
        }
        if (answer.meaning == Answer::Meaning::wroteAndNotVerified) {
            return endedWith(ExitCode::nobodyKnows,
                             "The " + written +
                                 " were written, but could not be read back from the disk itself, so nobody knows "
                                 "whether it has kept them.",
                             "Unplug the accessory, plug it in again and send the image once more.");
        }
        asked_.verified = true;
        return endedWith(ExitCode::success,
                         "The image is on " + answer.disk + ": " + written + " from block " +
                             std::to_string(answer.firstBlock) + " on, read back and equal.",
                         reachesIntoTheIcon() ? "It reaches into the icon area: send the icon again, too." : "");
    }

    bool reachesIntoTheIcon() const {
        return asked_.firstBlock == kFirmwareBlock && asked_.bytes > (kIconBlock - kFirmwareBlock) * kBlockBytes;
    }

    UpdateResult ofStranger(const ServiceAnswers::Given& given) const {
        if (given.isText() ? isHalfOfOurs(given.bytes) : !writes_) {
            return endedWith(ExitCode::nobodyKnows, "Only a part of the service's answer came" + consequence(),
                             writes_ ? kSeeTheEnd : "Try again.");
        }
        return endedWith(ExitCode::nobodyKnows,
                         "What answers on port " + std::to_string(kServicePort) +
                             " is not kestrav-commandd: Prometheus and Cockpit use that port, too.",
                         findTheListener());
    }

    UpdateResult asked_;
    bool writes_;
};

}  // namespace

UpdateResult judgeExchange(const ServiceAnswers::Exchange& exchange, const UpdateResult& asked) {
    Judge judge(asked, exchange.question);
    return std::visit([&](const auto& end) { return judge.of(end); }, exchange.end);
}

}  // namespace kestrav
