#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

#include "app/endingOf.h"
#include "app/reportOf.h"

namespace kestrav {
namespace {

using Texts = std::vector<std::string>;
using Kind = Report::Kind;
using Why = Unanswered::Why;
using Board = WriteWatch::End;

/// What the service has done with the write of a firmware image of 1000 bytes; an update that began with the
/// unmounting.
UpdateFacts factsAfter(const std::function<void(AnswerSink&)>& end) {
    ServiceAnswers answers;
    answers.asked("dd", Texts{"if=/a", "of=/dev/rsdzz", "seek=1536", "bs=512"});
    end(answers);
    UpdateFacts facts;
    facts.request = {"sdzz", 1536, 1000};
    facts.write = *answers.last();
    return facts;
}

UpdateFacts answered(const std::string& bytes) {
    return factsAfter([&](AnswerSink& sink) { sink.answered(bytes); });
}

UpdateFacts unanswered(Why why, std::optional<Board> board = {}) {
    UpdateFacts facts = factsAfter([&](AnswerSink& sink) { sink.unanswered({why, "Said of it."}); });
    facts.board = board;
    return facts;
}

UpdateFacts changed(UpdateFacts facts, const std::function<void(UpdateFacts&)>& change) {
    change(facts);
    return facts;
}

UpdateFacts nothingHandedOver(const std::function<void(UpdateFacts&)>& change) {
    return changed({}, change);
}

const std::string kWrote = "Wrote 1000 bytes to sdzz at block 1536, verified, 11.3 MB/s.";

struct Row {
    const char* name;
    UpdateFacts facts;
    UpdateEnding ending;
    Kind kind;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

std::vector<Row> answeredRows() {
    return {
        {"Verified", answered(kWrote), UpdateEnding::firmwareArrived, Kind::success},
        {"VerifiedIntoTheIcon",
         changed(answered("Wrote 262145 bytes to sdzz at block 1536, verified, 11.3 MB/s."),
                 [](UpdateFacts& facts) { facts.request.bytes = 262145; }),
         UpdateEnding::firmwareArrivedInIcon, Kind::success},
        {"VerifiedIcon",
         changed(answered("Wrote 1000 bytes to sdzz at block 2048, verified, 11.3 MB/s."),
                 [](UpdateFacts& facts) { facts.request.firstBlock = 2048; }),
         UpdateEnding::iconArrived, Kind::success},
        {"NotVerified", answered("Wrote 1000 bytes to sdzz at block 1536, not verified, 11.3 MB/s."),
         UpdateEnding::notReadBack, Kind::nobodyKnows},
        {"OtherLength", answered("Wrote 999 bytes to sdzz at block 1536, verified, 11.3 MB/s."),
         UpdateEnding::imageChanged, Kind::notWritten},
        {"OtherDisk", answered("Wrote 1000 bytes to sdb at block 1536, verified, 11.3 MB/s."), UpdateEnding::otherWrite,
         Kind::nobodyKnows},
        {"Refused", answered("Refused: the disk sdzz is write-protected."), UpdateEnding::refused, Kind::notWritten},
        {"RefusedUnplugged",
         changed(answered("Refused: there is no /dev/rsdzz."),
                 [](UpdateFacts& facts) { facts.isAccessoryThere = false; }),
         UpdateEnding::accessoryUnplugged, Kind::notWritten},
        {"RefusedWithoutADisk",
         changed(answered("Refused: there is no /dev/rnil."), [](UpdateFacts& facts) { facts.hasDisk = false; }),
         UpdateEnding::noDiskYet, Kind::notWritten},
        {"Failed", answered("Failed: Input/output error."), UpdateEnding::failed, Kind::notWritten},
        {"FailedUnplugged",
         changed(answered("Failed: No such device."), [](UpdateFacts& facts) { facts.isAccessoryThere = false; }),
         UpdateEnding::unpluggedInTheMiddle, Kind::notWritten},
        {"Half", answered("Wrote 1000 bytes to sdzz at blo"), UpdateEnding::halfAnAnswer, Kind::nobodyKnows},
        {"Stranger", answered("HTTP/1.1 400 Bad Request"), UpdateEnding::strangersAnswer, Kind::nobodyKnows},
        {"StrangersBytes", answered("\xff\xfe"), UpdateEnding::strangersAnswer, Kind::nobodyKnows},
        {"AnswerToTheUnmounting", answered("Unmounted sdzz1 from /media/x."), UpdateEnding::halfAnAnswer,
         Kind::nobodyKnows},
        {"NothingToUnmount", answered("sdzz1 was not mounted."), UpdateEnding::strangersAnswer, Kind::nobodyKnows},
    };
}

std::vector<Row> silentRows() {
    return {
        {"HostNotFound", unanswered(Why::hostNotFound), UpdateEnding::cannotConnect, Kind::notWritten},
        {"ConnectingFailed", unanswered(Why::connectingFailed), UpdateEnding::cannotConnect, Kind::notWritten},
        {"NoDescriptorLeft", unanswered(Why::noDescriptorLeft), UpdateEnding::noDescriptorLeft, Kind::notWritten},
        {"NotAccepted", unanswered(Why::notAccepted), UpdateEnding::notRunning, Kind::notWritten},
        {"NotAcceptedInTime", unanswered(Why::notAcceptedInTime), UpdateEnding::notAcceptedInTime, Kind::notWritten},
        {"NotSent", unanswered(Why::notSent), UpdateEnding::notSent, Kind::notWritten},
        {"NotTheService", unanswered(Why::notTheService), UpdateEnding::strangersAnswer, Kind::nobodyKnows},
        {"RequestFailed", unanswered(Why::requestFailed), UpdateEnding::serviceGone, Kind::nobodyKnows},
        {"Silent", unanswered(Why::noReplyInTime), UpdateEnding::noAnswerInTime, Kind::nobodyKnows},
        {"SilentWithoutABoard", unanswered(Why::noReplyInTime, Board::unknown), UpdateEnding::noAnswerInTime,
         Kind::nobodyKnows},
        {"Gone", unanswered(Why::closedWithoutAReply), UpdateEnding::serviceGone, Kind::nobodyKnows},
        {"GoneWithoutABoard", unanswered(Why::closedWithoutAReply, Board::unknown), UpdateEnding::serviceGone,
         Kind::nobodyKnows},
        {"LateAndWritten", unanswered(Why::noReplyInTime, Board::wrote), UpdateEnding::boardSaysArrived, Kind::success},
        {"LateAndRefused", unanswered(Why::noReplyInTime, Board::refused), UpdateEnding::boardSaysRefused,
         Kind::notWritten},
        {"LateAndFailed", unanswered(Why::noReplyInTime, Board::failed), UpdateEnding::boardSaysFailed,
         Kind::notWritten},
        {"Died", unanswered(Why::closedWithoutAReply, Board::died), UpdateEnding::serviceDied, Kind::nobodyKnows},
        {"Empty", nothingHandedOver([](UpdateFacts& facts) { facts.isImageEmpty = true; }), UpdateEnding::imageEmpty,
         Kind::notWritten},
        {"NoRegistry", nothingHandedOver([](UpdateFacts& facts) { facts.isRegistryReached = false; }),
         UpdateEnding::registryOutOfReach, Kind::notWritten},
        {"NoAccessory", nothingHandedOver([](UpdateFacts& facts) { facts.isAccessoryFound = false; }),
         UpdateEnding::noAccessory, Kind::notWritten},
        {"NothingHandedOver", nothingHandedOver([](UpdateFacts&) {}), UpdateEnding::notHandedOver, Kind::notWritten},
    };
}

class Ending : public testing::TestWithParam<Row> {};

TEST_P(Ending, IsFoundOutAndHasItsWords) {
    const Row& row = GetParam();
    const UpdateEnding ending = endingOf(row.facts);
    EXPECT_EQ(ending, row.ending);
    const Report& report = reportOf(ending);
    EXPECT_EQ(report.kind, row.kind);
    EXPECT_FALSE(std::string(report.headline).empty());
    EXPECT_FALSE(std::string(report.remedy).empty());
    // Whoever sees only the first words of the line must know how it stands.
    EXPECT_EQ(std::string(report.headline).starts_with("Nobody knows"), row.kind == Kind::nobodyKnows);
    EXPECT_EQ(std::string(report.headline).starts_with("Not written"), row.kind == Kind::notWritten);
}

std::string nameOf(const testing::TestParamInfo<Row>& row) {
    return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(Answered, Ending, testing::ValuesIn(answeredRows()), nameOf);
INSTANTIATE_TEST_SUITE_P(Silent, Ending, testing::ValuesIn(silentRows()), nameOf);

TEST(Endings, AreAllReached) {
    std::set<UpdateEnding> reached;
    for (const auto& rows : {answeredRows(), silentRows()})
        for (const Row& row : rows)
            reached.insert(row.ending);
    EXPECT_EQ(reached.size(), static_cast<std::size_t>(UpdateEnding::serviceDied) + 1);
}

TEST(Endings, AreNotSaidWhileTheBoardMayTellMore) {
    EXPECT_TRUE(unanswered(Why::noReplyInTime).mayGoOn());
    EXPECT_TRUE(unanswered(Why::closedWithoutAReply).mayGoOn());
    EXPECT_FALSE(unanswered(Why::noReplyInTime, Board::unknown).mayGoOn());
    EXPECT_FALSE(unanswered(Why::notAccepted).mayGoOn());
    EXPECT_FALSE(answered(kWrote).mayGoOn());
    EXPECT_FALSE(UpdateFacts().mayGoOn());
}

TEST(Endings, OfAnImageThatArrivedOfferNoSecondOne) {
    EXPECT_FALSE(reportOf(UpdateEnding::firmwareArrived).canBeSentAgain);
    EXPECT_FALSE(reportOf(UpdateEnding::imageEmpty).canBeSentAgain);
    EXPECT_TRUE(reportOf(UpdateEnding::unpluggedInTheMiddle).canBeSentAgain);
    EXPECT_TRUE(reportOf(UpdateEnding::serviceGone).canBeSentAgain);
}

}  // namespace
}  // namespace kestrav
