#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "cli/resultOfExchange.h"

namespace kestrav {
namespace {

using Texts = std::vector<std::string>;

enum class Question { write, read };

UpdateResult asked(Question question) {
    UpdateResult result;
    result.disk = "sdzz";
    result.firstBlock = 1536;
    result.bytes = question == Question::write ? 1000 : 1024;
    return result;
}

void ask(ServiceAnswers& answers, Question question) {
    if (question == Question::write) {
        answers.asked("dd", Texts{"if=/a", "of=/dev/rsdzz", "seek=1536", "bs=512"});
    } else {
        answers.asked("dd", Texts{"if=/dev/rsdzz", "skip=1536", "count=2"});
    }
}

struct AnsweredRow {
    const char* name;
    Question question;
    std::string answer;
    ExitCode status;
    std::string lastLine;
};

class ResultOfAnswer : public testing::TestWithParam<AnsweredRow> {};

TEST_P(ResultOfAnswer, SaysWhatItMeansAndWhatToDo) {
    const AnsweredRow& row = GetParam();
    ServiceAnswers answers;
    ask(answers, row.question);
    answers.answered(row.answer);
    const UpdateResult result = resultOfExchange(*answers.last(), asked(row.question));
    EXPECT_EQ(result.status, row.status);
    EXPECT_EQ(result.lastLine(), row.lastLine);
    EXPECT_EQ(result.verified, row.question == Question::write && row.status == ExitCode::success);
    EXPECT_EQ(result.disk, "sdzz");
}

const std::string kStranger =
    "What answers on port 9090 is not kestrav-commandd: Prometheus and Cockpit use that port, too. "
    "'ss -tlnpe sport = :9090' names the program.";
const std::string kHalf =
    "Only a part of the service's answer came, so nobody knows what the accessory holds. Don't unplug the accessory: "
    "'journalctl -t kestrav-commandd' tells the end.";
const std::string kHalfARead = "Only a part of the service's answer came, so nothing was read. Try again.";
const std::string kAnother =
    "The answer is about another write, so nobody knows what the accessory holds. Send the image again.";

INSTANTIATE_TEST_SUITE_P(
    Rows, ResultOfAnswer,
    testing::Values(
        AnsweredRow{"Verified", Question::write, "Wrote 1000 bytes to sdzz at block 1536, verified, 11.3 MB/s.",
                    ExitCode::success, "The image is on sdzz: 1000 bytes from block 1536 on, read back and equal."},
        AnsweredRow{"VerifiedWithARemark", Question::write,
                    "Wrote 1000 bytes to sdzz at block 1536, verified, 11.3 MB/s. It was mounted again.",
                    ExitCode::success, "The image is on sdzz: 1000 bytes from block 1536 on, read back and equal."},
        AnsweredRow{"NotVerified", Question::write, "Wrote 1000 bytes to sdzz at block 1536, not verified, 11.3 MB/s.",
                    ExitCode::nobodyKnows,
                    "The 1000 bytes were written, but could not be read back from the disk itself, so nobody knows "
                    "whether it has kept them. Unplug the accessory, plug it in again and send the image once more."},
        AnsweredRow{"OtherBytes", Question::write, "Wrote 999 bytes to sdzz at block 1536, verified, 11.3 MB/s.",
                    ExitCode::wentWrong,
                    "The image changed meanwhile: it had 1000 bytes, and 999 bytes were written. Send it again."},
        AnsweredRow{"OtherDisk", Question::write, "Wrote 1000 bytes to sdb at block 1536, verified, 11.3 MB/s.",
                    ExitCode::nobodyKnows, kAnother},
        AnsweredRow{"OtherBlock", Question::write, "Wrote 1000 bytes to sdzz at block 2048, verified, 11.3 MB/s.",
                    ExitCode::nobodyKnows, kAnother},
        AnsweredRow{"Refused", Question::write, "Refused: the disk sdzz is write-protected.", ExitCode::wentWrong,
                    "Nothing was written: the disk sdzz is write-protected."},
        AnsweredRow{"Failed", Question::write, "Failed: the write took longer than an hour. Repeat it.",
                    ExitCode::wentWrong, "The update failed: the write took longer than an hour. Repeat it."},
        AnsweredRow{"WebServer", Question::write, "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n",
                    ExitCode::nobodyKnows, kStranger},
        AnsweredRow{"Binary", Question::write, "\xff\xfe\x01", ExitCode::nobodyKnows, kStranger},
        AnsweredRow{"AnswerToSomethingElse", Question::write, "sdzz1 was not mounted.", ExitCode::nobodyKnows,
                    kStranger},
        AnsweredRow{"Half", Question::write, "Wrote 1000 bytes to sdzz at blo", ExitCode::nobodyKnows, kHalf},
        AnsweredRow{"FirstLetters", Question::write, "Fai", ExitCode::nobodyKnows, kHalf},
        AnsweredRow{"RefusedWithoutAReason", Question::write, "Refused:", ExitCode::nobodyKnows, kHalf},
        AnsweredRow{"Blocks", Question::read, std::string(1024, '\xff'), ExitCode::success, ""},
        AnsweredRow{"HalfTheBlocks", Question::read, std::string(512, '\xff'), ExitCode::nobodyKnows, kHalfARead},
        AnsweredRow{"ReadRefused", Question::read, "Refused: no.", ExitCode::wentWrong, "Nothing was read: no."},
        AnsweredRow{"ReadFailed", Question::read, "Failed: Input/output error.", ExitCode::wentWrong,
                    "Reading failed: Input/output error."},
        AnsweredRow{"ReadFromAWebServer", Question::read, "HTTP/1.1 400 Bad Request", ExitCode::nobodyKnows,
                    kStranger}),
    [](const auto& row) { return row.param.name; });

struct UnansweredRow {
    const char* name;
    Unanswered::Why why;
    ExitCode status;
    std::string lastLine;
    std::string ofARead;
};

class ResultOfSilence : public testing::TestWithParam<UnansweredRow> {};

TEST_P(ResultOfSilence, SaysWhatItMeansAndWhatToDo) {
    const UnansweredRow& row = GetParam();
    for (const Question question : {Question::write, Question::read}) {
        ServiceAnswers answers;
        ask(answers, question);
        answers.unanswered({row.why, "It is somebody else."});
        const UpdateResult result = resultOfExchange(*answers.last(), asked(question));
        EXPECT_EQ(result.status, row.status);
        EXPECT_EQ(result.lastLine(), question == Question::write ? row.lastLine : row.ofARead);
        EXPECT_FALSE(result.verified);
    }
}

const std::string kUnreachable =
    "The service can't be reached, so nothing was handed over. Is the loopback interface up?";
const std::string kTooMany =
    "Too many files are open for a connection to the service, so nothing was handed over. 'ulimit -n' shows how many "
    "there may be: raise it, or do fewer things at once.";
const std::string kNotRunning = "The service is not running: systemctl start kestrav-commandd.socket";
const std::string kStuck = "The service does not take the request: systemctl restart kestrav-commandd";
const std::string kBroken = "The connection broke before the service had the request, so nothing was done. Try again.";
const std::string kSomebodyElse = "It is somebody else. 'ss -tlnpe sport = :9090' names the program.";

using Why = Unanswered::Why;

INSTANTIATE_TEST_SUITE_P(
    Rows, ResultOfSilence,
    testing::Values(
        UnansweredRow{"HostNotFound", Why::hostNotFound, ExitCode::failure, kUnreachable, kUnreachable},
        UnansweredRow{"ConnectingFailed", Why::connectingFailed, ExitCode::failure, kUnreachable, kUnreachable},
        UnansweredRow{"NoDescriptorLeft", Why::noDescriptorLeft, ExitCode::failure, kTooMany, kTooMany},
        UnansweredRow{"NotAccepted", Why::notAccepted, ExitCode::failure, kNotRunning, kNotRunning},
        UnansweredRow{"NotAcceptedInTime", Why::notAcceptedInTime, ExitCode::failure, kStuck, kStuck},
        UnansweredRow{"NotSent", Why::notSent, ExitCode::failure, kBroken, kBroken},
        UnansweredRow{"NoReplyInTime", Why::noReplyInTime, ExitCode::nobodyKnows,
                      "The service has not answered in time, so nobody knows what the accessory holds. Don't unplug "
                      "the accessory: 'journalctl -t kestrav-commandd' tells the end.",
                      "The service has not answered in time, so nothing was read. Try again."},
        UnansweredRow{"ClosedWithoutAReply", Why::closedWithoutAReply, ExitCode::nobodyKnows,
                      "The service has gone without an answer, so nobody knows what the accessory holds. Send the "
                      "image again.",
                      "The service has gone without an answer, so nothing was read. Try again."},
        UnansweredRow{"NotTheService", Why::notTheService, ExitCode::nobodyKnows, kSomebodyElse, kSomebodyElse}),
    [](const auto& row) { return row.param.name; });

TEST(ResultOfAnswer, KeepsItWhenItIsText) {
    ServiceAnswers answers;
    ask(answers, Question::write);
    answers.answered("Refused: no.");
    EXPECT_EQ(resultOfExchange(*answers.last(), asked(Question::write)).answer, "Refused: no.");
    answers.answered("\xff");
    EXPECT_EQ(resultOfExchange(*answers.last(), asked(Question::write)).answer, "");
}

}  // namespace
}  // namespace kestrav
