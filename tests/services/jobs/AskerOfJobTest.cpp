#include <array>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>

#include "base/UniqueFd.h"
#include "services/asker/ProcessRecord.h"
#include "services/jobs/AskerOfJob.h"
#include "services/jobs/FromJob.h"
#include "services/jobs/Request.h"
#include "services/jobs/say.h"
#include "tests/sandbox/ChildProcess.h"
#include "tests/services/asker/FakeAsker.h"

namespace kestrav {
namespace {

/// One who asks for nothing in particular, and remembers whether it was let go.
class AnyRequest final : public Request {
  public:
    FakeAsker whoAsks;
    bool isLetGo = false;

    Asker& asker() override { return whoAsks; }
    Outcome<CommandLine> read() override { return CommandLine{}; }
    void leaveService() override {}
    void letGo() override { isLetGo = true; }
    void ended(const RequestEnd&) override {}
};

std::array<int, 2> pairOfSockets() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw std::runtime_error("no pair of sockets");
    return ends;
}

/// The asker's side of the channel, with the service's in the test's hands.
class AskerOfAJob : public testing::Test {
  protected:
    void tell(ToJob word) const { say(service_.get(), word); }
    /// The words that have come from the asker, a letter for each.
    std::string heard() const {
        std::string words;
        std::array<char, 1024> bytes{};
        while (::recv(service_.get(), bytes.data(), bytes.size(), MSG_DONTWAIT) > 0)
            words += bytes[0];
        return words;
    }

    const std::array<int, 2> ends_ = pairOfSockets();
    UniqueFd service_{ends_[0]};
    const UniqueFd job_{ends_[1]};
    AnyRequest request_;
    AskerOfJob asker_{request_, job_.get()};
};

constexpr char kWantsToAsk = static_cast<char>(FromJob::wantsToAsk);
constexpr char kWantsToBegin = static_cast<char>(FromJob::wantsToBegin);
const ConsentSubject kSomebody{AskingBusName{":1.1"}};

TEST_F(AskerOfAJob, BeginsWhenTheServiceSaysSo) {
    tell(ToJob::begin);
    EXPECT_TRUE(asker_.mayBegin());
    EXPECT_EQ(heard(), std::string(1, kWantsToBegin));
}

TEST_F(AskerOfAJob, BeginsNothingWhenTheServiceIsGone) {
    service_.reset();
    EXPECT_FALSE(asker_.mayBegin());
}

TEST_F(AskerOfAJob, BeginsNothingThatTheAskerDoesNotWantAtTheLastMoment) {
    tell(ToJob::begin);
    request_.whoAsks.begins = false;
    EXPECT_FALSE(asker_.mayBegin());
}

TEST_F(AskerOfAJob, LetsTheAskerGoOnceItIsLate) {
    bool answered = false;
    asker_.whenAnswered([&] { answered = true; });
    tell(ToJob::ask);
    ASSERT_TRUE(asker_.awaitTurn(kSomebody));
    EXPECT_TRUE(asker_.stillWants());
    EXPECT_FALSE(answered || request_.isLetGo);
    tell(ToJob::late);
    EXPECT_TRUE(asker_.stillWants()) << "the question goes on";
    EXPECT_TRUE(answered);
    EXPECT_TRUE(request_.isLetGo);
    // The service has answered: whether the asker is still there means nothing any more.
    request_.whoAsks.wants = false;
    EXPECT_TRUE(asker_.stillWants());
}

TEST_F(AskerOfAJob, DoesNotEvenWantToBeginOnceItIsLate) {
    tell(ToJob::ask);
    ASSERT_TRUE(asker_.awaitTurn(kSomebody));
    tell(ToJob::late);
    ASSERT_TRUE(asker_.stillWants());
    EXPECT_EQ(heard(), std::string(1, kWantsToAsk));
    tell(ToJob::begin);
    EXPECT_FALSE(asker_.mayBegin());
    EXPECT_EQ(heard(), "");
}

TEST_F(AskerOfAJob, WantsNothingForAProcessThatHasEnded) {
    ChildProcess child(::fork());
    if (child.pid() == 0) {
        ::pause();
        ::_exit(0);
    }
    tell(ToJob::ask);
    ASSERT_TRUE(asker_.awaitTurn(AskingProcess{child.pid(), ProcessRecord(child.pid()).startTime().value(), 0}));
    tell(ToJob::late);
    EXPECT_TRUE(asker_.stillWants());
    child.end();
    EXPECT_FALSE(asker_.stillWants());
}

TEST_F(AskerOfAJob, WantsNothingLateWhereNobodyWasAskedAbout) {
    tell(ToJob::late);
    EXPECT_FALSE(asker_.stillWants());
}

TEST_F(AskerOfAJob, GivesItsTurnUpWhenTheAskerLeaves) {
    request_.whoAsks.wants = false;
    const auto turn = asker_.awaitTurn(kSomebody);
    ASSERT_FALSE(turn);
    EXPECT_EQ(turn.problem().sentence, "the request was given up before consent was given.");
}

TEST_F(AskerOfAJob, GivesItsTurnUpWhenTheServiceIsGone) {
    service_.reset();
    EXPECT_FALSE(asker_.awaitTurn(kSomebody));
    EXPECT_FALSE(asker_.stillWants());
}

}  // namespace
}  // namespace kestrav
