#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <vector>

#include "command/Answer.h"

namespace kestrav {
namespace {

using Meaning = Answer::Meaning;
using Kind = AnswerTo::Kind;

constexpr AnswerTo kToUnmount{Kind::unmount, 0};
constexpr AnswerTo kToWrite{Kind::write, 0};
constexpr AnswerTo kToRead{Kind::read, 512};
constexpr AnswerTo kToOther{Kind::other, 0};

const std::string kWritten = "Wrote 200000 bytes to sdzz at block 1536, verified, 95.2 MB/s.";

/// A block that begins with `start` and goes on with `rest`.
std::string block(const std::string& start, char rest) {
    return start + std::string(512 - start.size(), rest);
}

struct Row {
    const char* name;
    AnswerTo question;
    std::string bytes;
    Meaning meaning;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

class ParseAnswer : public testing::TestWithParam<Row> {};

TEST_P(ParseAnswer, TellsWhatItMeans) {
    EXPECT_EQ(parseAnswer(GetParam().bytes, GetParam().question).meaning, GetParam().meaning);
}

const auto kNameOfRow = [](const auto& row) { return std::string(row.param.name); };

INSTANTIATE_TEST_SUITE_P(
    Ours, ParseAnswer,
    testing::Values(
        Row{"Verified", kToWrite, kWritten, Meaning::wroteAndVerified},
        Row{"NotVerified", kToWrite,
            "Wrote 1 bytes to sda at block 0, not verified, 0.1 MB/s. This replaced the disk's partition table. The "
            "system gave no way to read past its own memory.",
            Meaning::wroteAndNotVerified},
        Row{"VerifiedWithARemark", kToWrite,
            kWritten + " It reaches into the icon area: blocks 1536 to 2050 were written.", Meaning::wroteAndVerified},
        Row{"LargestNumbers", kToWrite,
            "Wrote 18446744073709551615 bytes to sd-z_9 at block 9223372036854775807, verified, 99999.9 MB/s.",
            Meaning::wroteAndVerified},
        Row{"Unmounted", kToUnmount, "Unmounted sdzz1 from /media/me/KESTRAV.", Meaning::unmounted},
        Row{"UnmountedFromTwoPlaces", kToUnmount, "Unmounted sdzz1 from /media/größe and /mnt.", Meaning::unmounted},
        Row{"WasNotMounted", kToUnmount, "sdzz1 was not mounted.", Meaning::wasNotMounted},
        Row{"RefusedToUnmount", kToUnmount, "Refused: it is in use.", Meaning::refused},
        Row{"RefusedToWrite", kToWrite, "Refused: an administrator did not agree.", Meaning::refused},
        Row{"RefusedToRead", kToRead, "Refused: count=0 asks for nothing.", Meaning::refused},
        Row{"RefusedToDoAnythingElse", kToOther, "Refused: \"sh\" is not a command of this service.", Meaning::refused},
        Row{"FailedToUnmount", kToUnmount, "Failed: sdzz1 is busy.", Meaning::failed},
        Row{"FailedToWrite", kToWrite, "Failed: writing sdzz from block 1536 on: Input/output error.", Meaning::failed},
        Row{"FailedToRead", kToRead, "Failed: reading sdzz: Input/output error.", Meaning::failed},
        Row{"FailedAndCutOff", kToWrite, "Failed: writing sd", Meaning::failed},
        Row{"RefusedAndCutOffBehindThePrefix", kToWrite, "Refused: ", Meaning::refused},
        Row{"Block", kToRead, block("", '\0'), Meaning::blocks},
        Row{"TextAsABlock", kToRead, block("Wrote 1 bytes to sda at block 0, verified, 1.0 MB/s.", ' '),
            Meaning::blocks},
        Row{"BlockThatBeginsLikeAFailure", kToRead, block("Failed: ", '\0'), Meaning::blocks},
        Row{"BlockThatBeginsLikeARefusal", kToRead, block("Refused: \xff", 'a'), Meaning::blocks},
        Row{"ThatLongIsARefusalAllTheSame", kToRead, block("Refused: ", 'a'), Meaning::refused},
        Row{"MostBlocks", AnswerTo{Kind::read, 9728}, std::string(9728, '\xff'), Meaning::blocks}),
    kNameOfRow);

INSTANTIATE_TEST_SUITE_P(
    NotOurs, ParseAnswer,
    testing::Values(
        Row{"Nothing", kToWrite, "", Meaning::notOurs}, Row{"NothingToARead", kToRead, "", Meaning::notOurs},
        Row{"WebServer", kToWrite, "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n400 Bad Request",
            Meaning::notOurs},
        Row{"WebServerToAnUnmount", kToUnmount, "HTTP/1.1 400 Bad Request", Meaning::notOurs},
        Row{"WebServerToARead", kToRead, "HTTP/1.1 400 Bad Request", Meaning::notOurs},
        Row{"Greeting", kToWrite, "220 mail.example.org ESMTP", Meaning::notOurs},
        Row{"PrefixCutOff", kToWrite, "Wro", Meaning::notOurs},
        Row{"PrefixOfARefusalCutOff", kToWrite, "Refused:", Meaning::notOurs},
        Row{"PrefixOfAFailureCutOff", kToUnmount, "Failed", Meaning::notOurs},
        Row{"OtherCapitals", kToWrite, "failed: no", Meaning::notOurs},
        Row{"SpaceInFront", kToWrite, " " + kWritten, Meaning::notOurs},
        Row{"WithoutItsPrefix", kToWrite, kWritten.substr(6), Meaning::notOurs},
        Row{"LineEnd", kToWrite, kWritten + "\n", Meaning::notOurs},
        Row{"LineEndInAFailure", kToWrite, "Failed: no\r\n", Meaning::notOurs},
        Row{"NulBehindIt", kToWrite, kWritten + std::string(1, '\0'), Meaning::notOurs},
        Row{"NulInside", kToUnmount, std::string("Refused: \0", 10), Meaning::notOurs},
        Row{"ControlCharacter", kToWrite, "Refused: \x1f", Meaning::notOurs},
        Row{"Delete", kToWrite, "Refused: \x7f", Meaning::notOurs},
        Row{"LastControlCharacterOfTwoBytes", kToWrite, "Refused: \xc2\x9f", Meaning::notOurs},
        Row{"NoControlCharacter", kToWrite, "Refused:\x20~\xc2\xa0.", Meaning::refused},
        Row{"ControlCharacterOfTwoBytes", kToWrite, "Refused: \xc2\x9b[2J", Meaning::notOurs},
        Row{"NotUtf8", kToWrite, "Failed: \xff", Meaning::notOurs},
        Row{"CharacterCutOff", kToUnmount, "Unmounted sdzz1 from /media/gr\xc3", Meaning::notOurs},
        Row{"LongerThanAnyOfOurs", kToWrite, "Failed: " + std::string(10232, 'a'), Meaning::notOurs},
        Row{"NoNumber", kToWrite, "Wrote some bytes to sdzz at block 1536, verified, 95.2 MB/s.", Meaning::notOurs},
        Row{"NegativeNumber", kToWrite, "Wrote -1 bytes to sdzz at block 1536, verified, 95.2 MB/s.", Meaning::notOurs},
        Row{"NumberWithZeros", kToWrite, "Wrote 007 bytes to sdzz at block 1536, verified, 95.2 MB/s.",
            Meaning::notOurs},
        Row{"NumberTooLarge", kToWrite, "Wrote 18446744073709551616 bytes to sdzz at block 1536, verified, 95.2 MB/s.",
            Meaning::notOurs},
        Row{"NoDisk", kToWrite, "Wrote 1 bytes to  at block 1536, verified, 95.2 MB/s.", Meaning::notOurs},
        Row{"PathAsDisk", kToWrite, "Wrote 1 bytes to /dev/sda at block 1536, verified, 95.2 MB/s.", Meaning::notOurs},
        Row{"NoBlock", kToWrite, "Wrote 1 bytes to sda at block , verified, 95.2 MB/s.", Meaning::notOurs},
        Row{"NoVerdict", kToWrite, "Wrote 8 bytes.", Meaning::notOurs},
        Row{"OtherVerdict", kToWrite, "Wrote 1 bytes to sda at block 0, nearly verified, 95.2 MB/s.", Meaning::notOurs},
        Row{"CutOffBehindTheVerdict", kToWrite, "Wrote 200000 bytes to sdzz at block 1536, verified, 95.",
            Meaning::notOurs},
        Row{"NoSpeed", kToWrite, "Wrote 200000 bytes to sdzz at block 1536, verified, MB/s.", Meaning::notOurs},
        Row{"RemarkCutOff", kToWrite, kWritten + " It reaches in", Meaning::notOurs},
        Row{"RemarkWithoutASpace", kToWrite, kWritten + "It reaches into the icon area.", Meaning::notOurs},
        Row{"RemarkThatMovesTheTerminal", kToWrite, kWritten + " \x1b[2J.", Meaning::notOurs},
        Row{"TwoAnswersInOne", kToWrite, kWritten + kWritten + ";", Meaning::notOurs},
        Row{"UnmountedFromNowhere", kToUnmount, "Unmounted sdzz1 from .", Meaning::notOurs},
        Row{"UnmountedFromWhatMovesTheTerminal", kToUnmount, "Unmounted sdzz1 from /media/\x1b[2J.", Meaning::notOurs},
        Row{"UnmountedNothing", kToUnmount, "Unmounted ", Meaning::notOurs},
        Row{"UnmountedAndCutOff", kToUnmount, "Unmounted sdzz1 from /med", Meaning::notOurs},
        Row{"NobodyWasNotMounted", kToUnmount, " was not mounted.", Meaning::notOurs},
        Row{"WasNotMountedAndMore", kToUnmount, "sdzz1 was not mounted. Really.", Meaning::notOurs},
        Row{"SentenceThatEndsSo", kToUnmount, "the disk was not mounted.", Meaning::notOurs},
        Row{"HalfABlock", kToRead, std::string(256, 'x'), Meaning::notOurs},
        Row{"MoreThanTheBlocks", kToRead, std::string(513, 'x'), Meaning::notOurs},
        Row{"BlocksThatNobodyCounted", AnswerTo{Kind::read, 0}, "x", Meaning::notOurs},
        Row{"NothingOfBlocksThatNobodyCounted", AnswerTo{Kind::read, 0}, "", Meaning::notOurs}),
    kNameOfRow);

INSTANTIATE_TEST_SUITE_P(
    ToAnotherQuestion, ParseAnswer,
    testing::Values(Row{"WroteToAnUnmount", kToUnmount, kWritten, Meaning::notOurs},
                    Row{"WroteToARead", kToRead, kWritten, Meaning::notOurs},
                    Row{"UnmountedToAWrite", kToWrite, "Unmounted sdzz1 from /media/x.", Meaning::notOurs},
                    Row{"WasNotMountedToAWrite", kToWrite, "sdzz1 was not mounted.", Meaning::notOurs},
                    Row{"BlocksToAWrite", kToWrite, block("", '\0'), Meaning::notOurs},
                    Row{"AnythingToAnother", kToOther, kWritten, Meaning::notOurs}),
    kNameOfRow);

TEST(ParseAnswer, KeepsThePartsOfAWrite) {
    const Answer answer = parseAnswer(kWritten, kToWrite);
    EXPECT_EQ(answer.bytes, 200000U);
    EXPECT_EQ(answer.disk, "sdzz");
    EXPECT_EQ(answer.firstBlock, 1536U);
}

TEST(ParseAnswer, KeepsTheNameOfThePartition) {
    EXPECT_EQ(parseAnswer("sdzz1 was not mounted.", kToUnmount).disk, "sdzz1");
    EXPECT_EQ(parseAnswer("Unmounted sdy1 from /a and /b.", kToUnmount).disk, "sdy1");
}

TEST(ParseAnswer, KeepsTheSentencesOfAProblem) {
    EXPECT_EQ(parseAnswer("Refused: no. Why?", kToWrite).problem, "no. Why?");
    EXPECT_EQ(parseAnswer("Failed: no.", kToRead).problem, "no.");
}

TEST(ParseAnswer, NeverTakesTheFrontPartOfAWriteForOne) {
    for (std::size_t length = 0; length < kWritten.size(); ++length) {
        EXPECT_EQ(parseAnswer(std::string_view(kWritten).substr(0, length), kToWrite).meaning, Meaning::notOurs)
            << length;
    }
}

TEST(ParseAnswer, TakesNoDamagedByteOfAWriteForAnotherVerdict) {
    for (std::size_t at = 0; at < kWritten.size(); ++at) {
        for (const char damage : {'\0', '\xff', 'n', ' ', '.'}) {
            std::string damaged = kWritten;
            damaged[at] = damage;
            const Meaning meaning = parseAnswer(damaged, kToWrite).meaning;
            EXPECT_TRUE(meaning == Meaning::wroteAndVerified || meaning == Meaning::notOurs) << damaged;
        }
    }
}

struct Question {
    const char* name;
    std::string command;
    std::vector<std::string> arguments;
    Kind kind;
    std::uint64_t bytes;
};

void PrintTo(const Question& question, std::ostream* out) {
    *out << question.name;
}

class AnswerToTest : public testing::TestWithParam<Question> {};

TEST_P(AnswerToTest, KnowsWhatWasAsked) {
    const AnswerTo question = AnswerTo::of(GetParam().command, GetParam().arguments);
    EXPECT_EQ(question.kind, GetParam().kind);
    EXPECT_EQ(question.bytes, GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Questions, AnswerToTest,
    testing::Values(
        Question{"Unmount", "umount", {"/dev/sdzzs1"}, Kind::unmount, 0},
        Question{"Write", "dd", {"if=/a", "of=/dev/rsdzz", "seek=1536", "bs=512"}, Kind::write, 0},
        Question{"Read", "dd", {"if=/dev/rsdzz", "skip=0", "count=19"}, Kind::read, 9728},
        Question{"CountOfNothing", "dd", {"if=/dev/rsdzz", "skip=0", "count="}, Kind::read, 0},
        Question{"CountWithMore", "dd", {"if=/dev/rsdzz", "skip=0", "count=2x"}, Kind::read, 0},
        Question{"NegativeCount", "dd", {"if=/dev/rsdzz", "skip=0", "count=-1"}, Kind::read, 0},
        Question{"CountBeyondAllBytes", "dd", {"if=/dev/rsdzz", "skip=0", "count=36028797018963969"}, Kind::read, 0},
        Question{"CountOfAllBytesButABlock",
                 "dd",
                 {"if=/dev/rsdzz", "skip=0", "count=36028797018963967"},
                 Kind::read,
                 18446744073709551104U},
        Question{"HalfAWrite", "dd", {"if=/a"}, Kind::other, 0},
        Question{"AnotherCommand", "sh", {"of=/dev/sda"}, Kind::other, 0}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace kestrav
