#include "outcome/judgeExchange.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "base/stopProcess.h"
#include "protocol/wire.h"

namespace kestrav {
namespace {

using Finding = Judgement::Finding;

/// Whether it is the beginning of something that the service says.
bool isHalfOfOurs(std::string_view answer) {
    constexpr std::array kPrefixes{kWrotePrefix, kUnmountedPrefix, kRefusedPrefix, kFailedPrefix};
    return std::ranges::any_of(kPrefixes, [&](std::string_view prefix) {
        const std::size_t common = std::min(prefix.size(), answer.size());
        return answer.substr(0, common) == prefix.substr(0, common);
    });
}

Judgement ofWritten(const Answer& answer, const Request& request) {
    const bool isAboutThis = answer.disk == request.disk && std::cmp_equal(answer.firstBlock, request.firstBlock);
    if (!isAboutThis) return {Finding::aboutAnotherWrite, {}, 0};
    if (!std::cmp_equal(answer.bytes, request.bytes)) return {Finding::otherLength, {}, answer.bytes};
    const bool verified = answer.meaning == Answer::Meaning::wroteAndVerified;
    return {verified ? Finding::verified : Finding::notVerified, {}, answer.bytes};
}

Judgement ofStranger(const ServiceAnswers::Given& given, const AnswerTo& question) {
    const bool isHalf = given.isText() ? isHalfOfOurs(given.bytes) : question.kind == AnswerTo::Kind::read;
    return {isHalf ? Finding::halfAnAnswer : Finding::strangersAnswer, {}, 0};
}

Judgement judged(const ServiceAnswers::Given& given, const AnswerTo& question, const Request& request) {
    const Answer& answer = given.answer;
    switch (answer.meaning) {
        case Answer::Meaning::wroteAndVerified:
        case Answer::Meaning::wroteAndNotVerified:
            return ofWritten(answer, request);
        case Answer::Meaning::refused:
            return {Finding::refused, answer.problem, 0};
        case Answer::Meaning::failed:
            return {Finding::failed, answer.problem, 0};
        case Answer::Meaning::blocks:
            return {Finding::blocksCame, {}, 0};
        case Answer::Meaning::unmounted:
        case Answer::Meaning::wasNotMounted:
        case Answer::Meaning::notOurs:
            return ofStranger(given, question);
    }
    stopProcess();
}

Judgement judged(const Unanswered& unanswered, const AnswerTo& /*question*/, const Request& /*request*/) {
    switch (unanswered.why) {
        case Unanswered::Why::hostNotFound:
        case Unanswered::Why::connectingFailed:
            return {Finding::cannotConnect, {}, 0};
        case Unanswered::Why::noDescriptorLeft:
            return {Finding::noDescriptorLeft, {}, 0};
        case Unanswered::Why::notAccepted:
            return {Finding::notRunning, {}, 0};
        case Unanswered::Why::notAcceptedInTime:
            return {Finding::notAcceptedInTime, {}, 0};
        case Unanswered::Why::notSent:
            return {Finding::notSent, {}, 0};
        case Unanswered::Why::noReplyInTime:
            return {Finding::noReplyInTime, {}, 0};
        case Unanswered::Why::closedWithoutAReply:
            return {Finding::closedWithoutAReply, {}, 0};
        case Unanswered::Why::requestFailed:
            return {Finding::requestFailed, {}, 0};
        case Unanswered::Why::notTheService:
            return {Finding::strangerListens, unanswered.sentence, 0};
    }
    stopProcess();
}

}  // namespace

Judgement judgeExchange(const ServiceAnswers::Exchange& exchange, const Request& request) {
    return std::visit([&](const auto& end) { return judged(end, exchange.question, request); }, exchange.end);
}

}  // namespace kestrav
