#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "base/SystemLog.h"
#include "command/CommandService.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/LoopbackService.h"
#include "tests/command/fakes/RecordedAnswers.h"
#include "tests/sanitizers.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Texts = std::vector<std::string>;
using Why = Unanswered::Why;

class CommandAnswers : public testing::Test {
  protected:
    void runOn(const CommandEndpoint& endpoint, const std::string& argument = "x") {
        EXPECT_EQ(CommandService(log_, endpoint, &answers_).runWithCommand("dd", Texts{argument}), "");
    }
    void runAgainst(LoopbackBehaviour behaviour, const std::string& argument = "x") {
        const LoopbackService service(std::move(behaviour));
        runOn({.port = service.port(), .connectSeconds = 1, .readSeconds = 1}, argument);
    }
    /// That there was no answer, why, and whether the log and the sink have the same sentence of it, or none.
    void expectNoAnswer(Why why) {
        ASSERT_THAT(answers_.unanswered(), SizeIs(1));
        EXPECT_EQ(answers_.unanswered()[0].why, why);
        const std::string sentence = answers_.unanswered()[0].sentence;
        EXPECT_EQ(log_.entries(), sentence.empty() ? Texts{} : Texts{sentence});
        EXPECT_EQ(answers_.events().back(), "unanswered");
        EXPECT_THAT(answers_.events(), SizeIs(2));
    }

    RecordingLog log_;
    RecordedAnswers answers_;
};

TEST_F(CommandAnswers, AreToldAfterTheQuestion) {
    runAgainst(answers("Wrote 1 bytes."));
    EXPECT_THAT(answers_.events(), ElementsAre("asked dd x", "answered Wrote 1 bytes."));
    EXPECT_THAT(log_.entries(), ElementsAre("Wrote 1 bytes."));
}

TEST_F(CommandAnswers, AreToldAsTheyCameWhereTheLogHasNone) {
    const std::string blocks = std::string("\0\xff", 2) + std::string(9726, '\x80');
    runAgainst(answers(blocks));
    EXPECT_THAT(answers_.events(), ElementsAre("asked dd x", "answered " + blocks));
    EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(CommandAnswers, AreCutAtTheRoomForThem) {
    runAgainst(answers(std::string(20000, 'a')));
    EXPECT_THAT(answers_.events(), ElementsAre("asked dd x", "answered " + std::string(10240, 'a')));
}

TEST_F(CommandAnswers, NameAHostThatIsNotFound) {
    runOn({.address = "256.256.256.256"});
    expectNoAnswer(Why::hostNotFound);
}

TEST_F(CommandAnswers, NameAConnectionThatIsNotAccepted) {
    const UniqueFd nobodyListens = boundSocket(SOCK_STREAM);
    runOn({.port = portOf(nobodyListens.get())});
    expectNoAnswer(Why::notAccepted);
    EXPECT_NE(answers_.unanswered()[0].sentence, "");
}

TEST_F(CommandAnswers, NameAConnectionThatIsNotAcceptedInTime) {
    const FullListener full;
    runOn({.port = full.port(), .connectSeconds = 1});
    expectNoAnswer(Why::notAcceptedInTime);
}

TEST_F(CommandAnswers, NameAConnectionThatCannotBeWaitedFor) {
    const LoopbackService service;
    runOn({.port = service.port(), .connectSeconds = -1});
    expectNoAnswer(Why::connectingFailed);
}

TEST_F(CommandAnswers, NameThatNoDescriptorIsLeft) {
    if (!kDescriptorsAreOurs) GTEST_SKIP() << "the checks for undefined behaviour need descriptors themselves";
    const LoopbackService service;
    {
        const DescriptorLimit none(0);
        runOn({.port = service.port()});
    }
    expectNoAnswer(Why::noDescriptorLeft);
}

TEST_F(CommandAnswers, NameARequestThatDidNotGoOut) {
    runAgainst(resetsInMidRequest(), std::string(32 << 20, 'x'));
    expectNoAnswer(Why::notSent);
}

TEST_F(CommandAnswers, NameAServiceThatKeepsSilent) {
    runAgainst(neverAnswers());
    expectNoAnswer(Why::noReplyInTime);
    EXPECT_EQ(answers_.unanswered()[0].sentence, "");
}

TEST_F(CommandAnswers, AreNotWaitedForAsLongAsAConnection) {
    const LoopbackService service(neverAnswers());
    const auto begun = std::chrono::steady_clock::now();
    runOn({.port = service.port(), .connectSeconds = 600, .readSeconds = 1});
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(300));
    expectNoAnswer(Why::noReplyInTime);
}

TEST_F(CommandAnswers, NameAServiceThatClosesAtOnce) {
    runAgainst(closesAtOnce());
    expectNoAnswer(Why::closedWithoutAReply);
}

TEST_F(CommandAnswers, NameAServiceThatClosesWithoutAReply) {
    runAgainst(answers(""));
    expectNoAnswer(Why::closedWithoutAReply);
}

TEST_F(CommandAnswers, NameAServiceThatResetsTheConnection) {
    runAgainst([](LoopbackConnection& connection) {
        connection.receiveRequest();
        connection.resetOnClose();
    });
    expectNoAnswer(Why::closedWithoutAReply);
}

/// Remembers how many answers there were when the log got its entry.
class OrderLog final : public SystemLog {
  public:
    explicit OrderLog(const RecordedAnswers& answers) : answers_(answers) {}
    void write(std::string_view /*entry*/) override { eventsBefore.push_back(answers_.events().size()); }

    std::vector<std::size_t> eventsBefore;

  private:
    const RecordedAnswers& answers_;
};

TEST_F(CommandAnswers, AreToldBehindTheLogsLine) {
    OrderLog log(answers_);
    const LoopbackService service(answers("done"));
    CommandService(log, {.port = service.port()}, &answers_).runWithCommand("dd", {});
    const UniqueFd nobodyListens = boundSocket(SOCK_STREAM);
    CommandService(log, {.port = portOf(nobodyListens.get())}, &answers_).runWithCommand("dd", {});
    EXPECT_THAT(log.eventsBefore, ElementsAre(1, 3));
    EXPECT_THAT(answers_.events(), SizeIs(4));
}

}  // namespace
}  // namespace kestrav
