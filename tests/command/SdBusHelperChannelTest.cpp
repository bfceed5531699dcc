#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <thread>

#include "command/Job.h"
#include "command/linux/SdBusHelperChannel.h"
#include "protocol/names.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/fakes/BusHelper.h"
#include "tests/command/fakes/PumpedMainQueue.h"
#include "tests/eventually.h"
#include "tests/sandbox/PrivateBus.h"

namespace kestrav {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Ne;
using testing::StartsWith;

int answerText(sd_bus_message* message) {
    return sd_bus_reply_method_return(message, "s", "Wrote 40000 bytes to sdb");
}

int neverAnswer(sd_bus_message*) {
    return 0;
}

/// A job, the real channel and a real bus, with a helper on it where the test wants one.
class JobOnABus : public testing::Test {
  protected:
    void serve(BusHelper::Answer answer) { helper_.emplace(bus_.address(), std::move(answer)); }

    void run() {
        job_->runWithCmd("umount", arguments_, [this](std::string text) { completions_.push_back(std::move(text)); });
    }

    /// Entries are made on the connection's thread and nowhere else.
    void expectLoggedElsewhere() const { EXPECT_THAT(log_.writers(), Each(Ne(std::this_thread::get_id()))); }

    const std::vector<std::string> arguments_{"/dev/sdbs1", "größe", ""};
    PrivateBus bus_;
    std::optional<BusHelper> helper_;
    SdBusHelperChannel channel_{bus_.address()};
    PumpedMainQueue queue_;
    RecordingLog log_;
    std::optional<Job> job_{std::in_place, channel_, queue_, log_};
    std::vector<std::string> completions_;
};

TEST_F(JobOnABus, CarriesTheCommandAndCompletesWithTheEmptyText) {
    serve(answerText);
    run();
    ASSERT_TRUE(queue_.runOne());
    EXPECT_THAT(completions_, ElementsAre(""));
    const auto requests = helper_->requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].cmd, "umount");
    EXPECT_EQ(requests[0].arguments, arguments_);
    EXPECT_TRUE(requests[0].mayAskThePerson);
    EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(JobOnABus, SharesOneConnectionBetweenRequests) {
    serve(answerText);
    run();
    run();
    ASSERT_TRUE(queue_.runOne() && queue_.runOne());
    const auto requests = helper_->requests();
    ASSERT_EQ(requests.size(), 2U);
    EXPECT_EQ(requests[0].sender, requests[1].sender);
}

TEST_F(JobOnABus, LogsAnErrorOfTheHelperAndDoesNotComplete) {
    serve([](sd_bus_message* message) {
        return sd_bus_reply_method_errorf(message, SD_BUS_ERROR_ACCESS_DENIED, "%s", "Refused: 100 %s");
    });
    run();
    ASSERT_TRUE(log_.waitFor("remote proxy error: Refused: 100 %s"));
    job_.reset();
    EXPECT_THAT(log_.entries(), ElementsAre("remote proxy error: Refused: 100 %s", "Connection Invalidated"));
    EXPECT_EQ(queue_.size(), 0U);
    expectLoggedElsewhere();
}

TEST_F(JobOnABus, DistrustsAnAnswerOfAnotherShape) {
    serve([](sd_bus_message* message) { return sd_bus_reply_method_return(message, "u", 7); });
    run();
    EXPECT_TRUE(log_.waitFor("remote proxy error: The helper's answer can't be understood."));
    EXPECT_EQ(queue_.size(), 0U);
}

TEST_F(JobOnABus, SaysTerminatedOnceWhenTheHelperGoesAwayAfterItsAnswer) {
    serve(answerText);
    run();
    ASSERT_TRUE(queue_.runOne());
    helper_.reset();
    ASSERT_TRUE(log_.waitFor("Connection Terminated"));
    EXPECT_THAT(log_.entries(), ElementsAre("Connection Terminated"));
    expectLoggedElsewhere();
}

TEST_F(JobOnABus, FailsTheRequestUnderWayWhenTheHelperGoesAway) {
    serve(neverAnswer);
    run();
    ASSERT_TRUE(helper_->waitForRequests(1));
    helper_.reset();
    ASSERT_TRUE(log_.waitFor("Connection Terminated"));
    ASSERT_TRUE(log_.waitFor("remote proxy error: "));
    EXPECT_EQ(log_.entries().size(), 2U);
    EXPECT_EQ(queue_.size(), 0U);
}

TEST_F(JobOnABus, SpeaksToANewHelperAfterAnInterruption) {
    serve(answerText);
    run();
    ASSERT_TRUE(queue_.runOne());
    helper_.reset();
    ASSERT_TRUE(log_.waitFor("Connection Terminated"));
    serve(answerText);
    run();
    ASSERT_TRUE(queue_.runOne());
    EXPECT_EQ(completions_.size(), 2U);
}

TEST_F(JobOnABus, SaysNothingOfAHelperThatItNeverSpokeTo) {
    // A second job's entry shows that the bus has told of the change.
    serve(answerText);
    job_->jobConnection();
    Job other(channel_, queue_, log_);
    other.runWithCmd("umount", arguments_, [](const std::string&) {});
    ASSERT_TRUE(queue_.runOne());
    helper_.reset();
    ASSERT_TRUE(log_.waitFor("Connection Terminated"));
    job_.reset();
    EXPECT_THAT(log_.entries(), ElementsAre("Connection Terminated", "Connection Invalidated"));
}

TEST_F(JobOnABus, IsInvalidatedWhenNobodyCanBeTheHelper) {
    run();
    ASSERT_TRUE(log_.waitFor("Connection Invalidated"));
    EXPECT_THAT(log_.entries(), ElementsAre(StartsWith("remote proxy error: "), "Connection Invalidated"));
    expectLoggedElsewhere();
}

TEST_F(JobOnABus, IsInvalidatedWhenTheHelperCannotBeStarted) {
    bus_.addActivatable("com.corvatel.KestravHelper", "/nonexistent/helper");
    run();
    ASSERT_TRUE(log_.waitFor("Connection Invalidated"));
    EXPECT_THAT(log_.entries(), ElementsAre(StartsWith("remote proxy error: "), "Connection Invalidated"));
}

TEST_F(JobOnABus, IsInvalidatedWhenTheStartedHelperDiesAtOnce) {
    bus_.addActivatable("com.corvatel.KestravHelper", "/bin/false");
    run();
    ASSERT_TRUE(log_.waitFor("Connection Invalidated"));
    EXPECT_THAT(log_.entries(), ElementsAre(StartsWith("remote proxy error: "), "Connection Invalidated"));
}

TEST_F(JobOnABus, StaysInvalidatedEvenWhenAHelperAppears) {
    run();
    ASSERT_TRUE(log_.waitFor("Connection Invalidated"));
    serve(answerText);
    run();
    EXPECT_FALSE(queue_.runOne(std::chrono::milliseconds(300)));
    EXPECT_THAT(helper_->requests(), IsEmpty());
    EXPECT_EQ(log_.entries().size(), 3U) << "the second request reports itself, nothing else";
}

TEST_F(JobOnABus, FailsTheRequestUnderWayWhenTheBusDies) {
    serve(neverAnswer);
    run();
    ASSERT_TRUE(helper_->waitForRequests(1));
    bus_.kill();
    ASSERT_TRUE(log_.waitFor("Connection Invalidated"));
    EXPECT_THAT(log_.entries(), ElementsAre(StartsWith("remote proxy error: "), "Connection Invalidated"));
    EXPECT_EQ(queue_.size(), 0U);
}

TEST_F(JobOnABus, DoesNotComeBackWithTheBus) {
    serve(answerText);
    run();
    ASSERT_TRUE(queue_.runOne());
    helper_.reset();
    ASSERT_TRUE(log_.waitFor("Connection Terminated"));
    bus_.kill();
    ASSERT_TRUE(log_.waitFor("Connection Invalidated"));
    bus_.start();
    serve(answerText);
    run();
    ASSERT_TRUE(log_.waitFor("remote proxy error: "));
    EXPECT_THAT(helper_->requests(), IsEmpty());
}

TEST_F(JobOnABus, IsInvalidatedWithoutABus) {
    bus_.kill();
    run();
    ASSERT_TRUE(log_.waitFor("remote proxy error: The system bus can't be reached: "));
    EXPECT_THAT(log_.entries(), Contains("Connection Invalidated"));
    job_.reset();
    EXPECT_EQ(log_.entries().size(), 2U) << "invalidated twice";
}

TEST_F(JobOnABus, FailsTheRequestUnderWayWhenTheJobIsReleased) {
    serve(neverAnswer);
    run();
    ASSERT_TRUE(helper_->waitForRequests(1));
    job_.reset();
    EXPECT_THAT(log_.entries(),
                ElementsAre("remote proxy error: The connection was closed.", "Connection Invalidated"));
}

TEST_F(JobOnABus, IsAskedNothingMoreOnceTheConnectionIsClosed) {
    const auto connection =
        channel_.open("com.corvatel.KestravHelper", HelperChannelOptions::privileged, {[] {}, [] {}});
    std::vector<std::string> told;
    const auto proxy = connection->remoteProxy([&](std::string_view why) { told.emplace_back(why); });
    connection->invalidate();
    proxy->runWithCmd("umount", arguments_, [](const std::string&) { ADD_FAILURE() << "answered"; });
    EXPECT_THAT(told, ElementsAre("The connection was closed."));
}

TEST_F(JobOnABus, OpensAndInvalidatesOneConnectionWhenItIsReleasedUnused) {
    job_.reset();
    EXPECT_THAT(log_.entries(), ElementsAre("Connection Invalidated"));
}

TEST_F(JobOnABus, DoesNotStartTheHelperByOpening) {
    const auto started = bus_.folder() / "started";
    bus_.addActivatable("com.corvatel.KestravHelper", "/usr/bin/touch " + started.string());
    job_->jobConnection();
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    EXPECT_FALSE(std::filesystem::exists(started));
    run();
    EXPECT_TRUE(eventually([&] { return std::filesystem::exists(started); })) << "a request did not start it either";
}

/// The time after which libsystemd gives a call up that has no limit of its own: 25 seconds, unless its environment
/// says otherwise. Here it is as long as this object lives.
class UsualTimeOut {
  public:
    explicit UsualTimeOut(const char* time) { ::setenv(kName, time, 1); }
    ~UsualTimeOut() { ::unsetenv(kName); }
    UsualTimeOut(const UsualTimeOut&) = delete;
    UsualTimeOut& operator=(const UsualTimeOut&) = delete;

  private:
    static constexpr const char* kName = "SYSTEMD_BUS_TIMEOUT";
};

TEST_F(JobOnABus, WaitsForASlowHelperLongerThanTheBusesUsualTimeOut) {
    const UsualTimeOut usual("2s");
    serve([](sd_bus_message* message) {
        std::this_thread::sleep_for(std::chrono::seconds(4));
        return answerText(message);
    });
    run();
    EXPECT_TRUE(queue_.runOne(std::chrono::seconds(40)));
    EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(JobOnABus, RefusesTextThatTheBusCannotCarry) {
    serve(answerText);
    const std::vector<std::string> withNul{std::string("if=/a\0b", 7)};
    job_->runWithCmd("dd", withNul, [](const std::string&) {});
    ASSERT_TRUE(log_.waitFor("remote proxy error: A command can't hold a NUL character."));
    const std::vector<std::string> notUtf8{"if=/\xff"};
    job_->runWithCmd("dd", notUtf8, [](const std::string&) {});
    ASSERT_TRUE(log_.waitFor("remote proxy error: The request can't be sent: "));
    run();
    EXPECT_TRUE(queue_.runOne()) << "the connection did not survive";
}

TEST_F(JobOnABus, ServesFortyConnectionsAtOnce) {
    serve(answerText);
    std::atomic<int> completed = 0;
    std::vector<std::unique_ptr<Job>> jobs;
    for (int i = 0; i < 40; ++i) {
        jobs.push_back(std::make_unique<Job>(channel_, queue_, log_));
        jobs.back()->runWithCmd("umount", arguments_, [&](const std::string&) { ++completed; });
    }
    for (int i = 0; i < 40; ++i)
        ASSERT_TRUE(queue_.runOne());
    EXPECT_EQ(completed, 40);
    EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST(SdBusHelperChannel, UsesTheSystemBusUnlessToldOtherwise) {
    EXPECT_STREQ(kSystemBusAddress, "unix:path=/run/dbus/system_bus_socket");
}

}  // namespace
}  // namespace kestrav
