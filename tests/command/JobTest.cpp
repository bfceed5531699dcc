#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <thread>

#include "command/Job.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/fakes/FakeHelperChannel.h"
#include "tests/command/fakes/PumpedMainQueue.h"
#include "tests/command/fakes/RecordedAnswers.h"

namespace kestrav {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class JobTest : public testing::Test {
  protected:
    explicit JobTest(bool somebodyListens = false) {
        job_.emplace(channel_, queue_, log_, somebodyListens ? &answers_ : nullptr);
    }

    void run(Job::CompletionHandler handler) { job_->runWithCmd("umount", arguments_, std::move(handler)); }
    FakeHelperChannel::Connection& connection() { return *channel_.connections.at(0); }

    const std::vector<std::string> arguments_{"/dev/sdbs1", "a b", ""};
    FakeHelperChannel channel_;
    PumpedMainQueue queue_;
    RecordingLog log_;
    RecordedAnswers answers_;
    std::optional<Job> job_;
};

TEST_F(JobTest, OpensNoConnectionBeforeItIsUsed) {
    EXPECT_THAT(channel_.connections, IsEmpty());
}

TEST_F(JobTest, OpensAPrivilegedConnectionToTheHelper) {
    run([](const std::string&) {});
    ASSERT_THAT(channel_.connections, SizeIs(1));
    EXPECT_EQ(connection().service, "com.corvatel.KestravHelper");
    EXPECT_EQ(static_cast<std::uint32_t>(connection().options), 4096U);
}

TEST_F(JobTest, SendsTheCommandAndItsArguments) {
    run([](const std::string&) {});
    ASSERT_THAT(connection().requests, SizeIs(1));
    EXPECT_EQ(connection().requests[0].cmd, "umount");
    EXPECT_EQ(connection().requests[0].arguments, arguments_);
}

TEST_F(JobTest, SharesOneConnectionBetweenRequests) {
    run([](const std::string&) {});
    run([](const std::string&) {});
    ASSERT_THAT(channel_.connections, SizeIs(1));
    EXPECT_THAT(connection().requests, SizeIs(2));
}

TEST_F(JobTest, CompletesOnTheMainQueueWithTheEmptyText) {
    std::vector<std::string> completions;
    std::thread::id completedOn;
    run([&](std::string text) {
        completions.push_back(std::move(text));
        completedOn = std::this_thread::get_id();
    });
    std::thread([&] { connection().requests[0].reply("Wrote 40000 bytes"); }).join();
    EXPECT_THAT(completions, IsEmpty()) << "completed before the main queue ran";
    ASSERT_TRUE(queue_.runOne());
    EXPECT_THAT(completions, ElementsAre(""));
    EXPECT_EQ(completedOn, std::this_thread::get_id());
    EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(JobTest, LogsAFailedRequestAndNeverCompletesIt) {
    bool completed = false;
    run([&](const std::string&) { completed = true; });
    connection().requests[0].fail("100 %s");
    EXPECT_EQ(queue_.size(), 0U);
    EXPECT_FALSE(completed);
    EXPECT_THAT(log_.entries(), ElementsAre("remote proxy error: 100 %s"));
}

TEST_F(JobTest, CallsAnInterruptionTerminatedAndKeepsTheConnection) {
    run([](const std::string&) {});
    connection().handlers.interrupted();
    EXPECT_THAT(log_.entries(), ElementsAre("Connection Terminated"));
    EXPECT_EQ(job_->jobConnection(), channel_.connections[0]);
    EXPECT_THAT(channel_.connections, SizeIs(1));
    EXPECT_THAT(connection().requests, SizeIs(1)) << "a request was repeated";
}

TEST_F(JobTest, CallsAnInvalidationInvalidatedAndKeepsTheConnection) {
    run([](const std::string&) {});
    connection().handlers.invalidated();
    run([](const std::string&) {});
    EXPECT_THAT(log_.entries(), ElementsAre("Connection Invalidated"));
    EXPECT_THAT(channel_.connections, SizeIs(1));
}

TEST_F(JobTest, InvalidatesTheConnectionWhenItIsReleased) {
    run([](const std::string&) {});
    job_.reset();
    EXPECT_EQ(connection().invalidations, 1);
    EXPECT_THAT(log_.entries(), ElementsAre("Connection Invalidated"));
}

TEST_F(JobTest, OpensAndInvalidatesOneConnectionWhenItIsReleasedUnused) {
    job_.reset();
    ASSERT_THAT(channel_.connections, SizeIs(1));
    EXPECT_EQ(connection().invalidations, 1);
    EXPECT_THAT(connection().requests, IsEmpty());
}

TEST_F(JobTest, CompletesAfterItsReleaseWhenTheReplyCameBefore) {
    int completions = 0;
    run([&](const std::string&) { ++completions; });
    connection().requests[0].reply("done");
    job_.reset();
    ASSERT_TRUE(queue_.runOne());
    EXPECT_EQ(completions, 1);
}

TEST_F(JobTest, UsesTheConnectionItIsGiven) {
    FakeHelperChannel other;
    const auto given = other.open("elsewhere", HelperChannelOptions::privileged, {[] {}, [] {}});
    job_->setJobConnection(given);
    run([](const std::string&) {});
    EXPECT_THAT(channel_.connections, IsEmpty());
    EXPECT_THAT(other.connections[0]->requests, SizeIs(1));
}

class JobAnswers : public JobTest {
  protected:
    JobAnswers() : JobTest(true) {}
};

TEST_F(JobAnswers, AreToldAsTheyComeWhileTheCompletionStaysEmpty) {
    std::vector<std::string> completions;
    run([&](std::string text) { completions.push_back(std::move(text)); });
    EXPECT_THAT(answers_.events(), ElementsAre("asked umount /dev/sdbs1 a b "));
    connection().requests[0].reply("sdb1 was not mounted.");
    EXPECT_THAT(answers_.events(), ElementsAre("asked umount /dev/sdbs1 a b ", "answered sdb1 was not mounted."));
    ASSERT_TRUE(queue_.runOne());
    EXPECT_THAT(completions, ElementsAre(""));
    EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(JobAnswers, NameAFailedRequestInTheHelpersWords) {
    run([](const std::string&) {});
    connection().requests[0].fail("Refused: no.");
    ASSERT_THAT(answers_.unanswered(), SizeIs(1));
    EXPECT_EQ(answers_.unanswered()[0].why, Unanswered::Why::requestFailed);
    EXPECT_EQ(answers_.unanswered()[0].sentence, "Refused: no.");
    EXPECT_THAT(log_.entries(), ElementsAre("remote proxy error: Refused: no."));
    EXPECT_EQ(queue_.size(), 0U);
}

TEST_F(JobAnswers, SayNothingOfTheConnectionItself) {
    run([](const std::string&) {});
    connection().handlers.interrupted();
    job_.reset();
    EXPECT_THAT(answers_.events(), SizeIs(1));
    EXPECT_THAT(log_.entries(), ElementsAre("Connection Terminated", "Connection Invalidated"));
}

using JobDeathTest = JobTest;

TEST_F(JobDeathTest, StopsWhenTheHelperDoesNotOfferTheProtocol) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    channel_.offersTheProtocol = false;
    EXPECT_EXIT(run([](const std::string&) {}), testing::KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace kestrav
