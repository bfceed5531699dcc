#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "outcome/judgeExchange.h"

namespace kestrav {
namespace {

using Texts = std::vector<std::string>;
using Finding = Judgement::Finding;
using Kind = Judgement::Kind;

enum class Question { write, read };

void ask(ServiceAnswers& answers, Question question) {
    if (question == Question::write) {
        answers.asked("dd", Texts{"if=/a", "of=/dev/rsdzz", "seek=1536", "bs=512"});
    } else {
        answers.asked("dd", Texts{"if=/dev/rsdzz", "skip=1536", "count=2"});
    }
}

Request requestFor(Question question) {
    return {"sdzz", 1536, question == Question::write ? 1000 : 1024};
}

struct AnsweredRow {
    const char* name;
    Question question;
    std::string answer;
    Finding finding;
    Kind kind;
    std::string detail;
    std::uint64_t written;
};

class JudgeAnswer : public testing::TestWithParam<AnsweredRow> {};

TEST_P(JudgeAnswer, FindsOutWhatItMeans) {
    const AnsweredRow& row = GetParam();
    ServiceAnswers answers;
    ask(answers, row.question);
    answers.answered(row.answer);
    const Judgement judgement = judgeExchange(*answers.last(), requestFor(row.question));
    EXPECT_EQ(judgement.finding, row.finding);
    EXPECT_EQ(judgement.kind(), row.kind);
    EXPECT_EQ(judgement.detail, row.detail);
    EXPECT_EQ(judgement.written, row.written);
    EXPECT_FALSE(judgement.mayGoOn());
}

constexpr Question kWrite = Question::write;
constexpr Question kRead = Question::read;

INSTANTIATE_TEST_SUITE_P(
    Rows, JudgeAnswer,
    testing::Values(
        AnsweredRow{"Verified", kWrite, "Wrote 1000 bytes to sdzz at block 1536, verified, 11.3 MB/s.",
                    Finding::verified, Kind::confirmed, "", 1000},
        AnsweredRow{"NotVerified", kWrite, "Wrote 1000 bytes to sdzz at block 1536, not verified, 11.3 MB/s.",
                    Finding::notVerified, Kind::nobodyKnows, "", 1000},
        AnsweredRow{"OtherBytes", kWrite, "Wrote 999 bytes to sdzz at block 1536, verified, 11.3 MB/s.",
                    Finding::otherLength, Kind::wentWrong, "", 999},
        AnsweredRow{"OtherDisk", kWrite, "Wrote 1000 bytes to sdb at block 1536, verified, 11.3 MB/s.",
                    Finding::aboutAnotherWrite, Kind::nobodyKnows, "", 0},
        AnsweredRow{"OtherBlock", kWrite, "Wrote 1000 bytes to sdzz at block 2048, verified, 11.3 MB/s.",
                    Finding::aboutAnotherWrite, Kind::nobodyKnows, "", 0},
        AnsweredRow{"Refused", kWrite, "Refused: the disk sdzz is write-protected.", Finding::refused, Kind::wentWrong,
                    "the disk sdzz is write-protected.", 0},
        AnsweredRow{"Failed", kWrite, "Failed: Input/output error.", Finding::failed, Kind::wentWrong,
                    "Input/output error.", 0},
        AnsweredRow{"WebServer", kWrite, "HTTP/1.1 400 Bad Request\r\n\r\n", Finding::strangersAnswer,
                    Kind::nobodyKnows, "", 0},
        AnsweredRow{"Binary", kWrite, "\xff\xfe\x01", Finding::strangersAnswer, Kind::nobodyKnows, "", 0},
        AnsweredRow{"AnswerToSomethingElse", kWrite, "sdzz1 was not mounted.", Finding::strangersAnswer,
                    Kind::nobodyKnows, "", 0},
        AnsweredRow{"Half", kWrite, "Wrote 1000 bytes to sdzz at blo", Finding::halfAnAnswer, Kind::nobodyKnows, "", 0},
        AnsweredRow{"FirstLetters", kWrite, "Fai", Finding::halfAnAnswer, Kind::nobodyKnows, "", 0},
        AnsweredRow{"Blocks", kRead, std::string(1024, '\xff'), Finding::blocksCame, Kind::confirmed, "", 0},
        AnsweredRow{"HalfTheBlocks", kRead, std::string(512, '\xff'), Finding::halfAnAnswer, Kind::nobodyKnows, "", 0},
        AnsweredRow{"ReadFromAWebServer", kRead, "HTTP/1.1 400 Bad Request", Finding::strangersAnswer,
                    Kind::nobodyKnows, "", 0}),
    [](const auto& row) { return row.param.name; });

struct UnansweredRow {
    const char* name;
    Unanswered::Why why;
    Finding finding;
    Kind kind;
    bool mayGoOn;
};

class JudgeSilence : public testing::TestWithParam<UnansweredRow> {};

TEST_P(JudgeSilence, FindsOutWhatItMeans) {
    const UnansweredRow& row = GetParam();
    for (const Question question : {kWrite, kRead}) {
        ServiceAnswers answers;
        ask(answers, question);
        answers.unanswered({row.why, "It is somebody else."});
        const Judgement judgement = judgeExchange(*answers.last(), requestFor(question));
        EXPECT_EQ(judgement.finding, row.finding);
        EXPECT_EQ(judgement.kind(), row.kind);
        EXPECT_EQ(judgement.mayGoOn(), row.mayGoOn);
        EXPECT_EQ(judgement.detail, row.finding == Finding::strangerListens ? "It is somebody else." : "");
    }
}

using Why = Unanswered::Why;

INSTANTIATE_TEST_SUITE_P(
    Rows, JudgeSilence,
    testing::Values(
        UnansweredRow{"HostNotFound", Why::hostNotFound, Finding::cannotConnect, Kind::notHandedOver, false},
        UnansweredRow{"ConnectingFailed", Why::connectingFailed, Finding::cannotConnect, Kind::notHandedOver, false},
        UnansweredRow{"NoDescriptorLeft", Why::noDescriptorLeft, Finding::noDescriptorLeft, Kind::notHandedOver, false},
        UnansweredRow{"NotAccepted", Why::notAccepted, Finding::notRunning, Kind::notHandedOver, false},
        UnansweredRow{"NotAcceptedInTime", Why::notAcceptedInTime, Finding::notAcceptedInTime, Kind::notHandedOver,
                      false},
        UnansweredRow{"NotSent", Why::notSent, Finding::notSent, Kind::notHandedOver, false},
        UnansweredRow{"NoReplyInTime", Why::noReplyInTime, Finding::noReplyInTime, Kind::nobodyKnows, true},
        UnansweredRow{"ClosedWithoutAReply", Why::closedWithoutAReply, Finding::closedWithoutAReply, Kind::nobodyKnows,
                      true},
        UnansweredRow{"RequestFailed", Why::requestFailed, Finding::requestFailed, Kind::nobodyKnows, false},
        UnansweredRow{"NotTheService", Why::notTheService, Finding::strangerListens, Kind::nobodyKnows, false}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace kestrav
