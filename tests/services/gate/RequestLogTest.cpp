#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "services/gate/RequestLog.h"
#include "tests/base/RecordingLog.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class RequestLogTest : public testing::Test {
  protected:
    void refuse(uid_t uid, int times) {
        for (int i = 0; i < times; ++i)
            requests_.refused(uid, "refused");
    }

    const uid_t stranger_ = ::geteuid() + 4711;
    const std::string name_ = "user " + std::to_string(stranger_);
    RequestLog::Time now_{1h};
    RecordingLog log_;
    RequestLog requests_{log_, RequestLog::kWindow, [this] { return now_; }};
};

TEST_F(RequestLogTest, ListsTheFirstRefusalsOfAStranger) {
    refuse(stranger_, 20);
    EXPECT_THAT(log_.entries(), SizeIs(20));
    refuse(stranger_, 1);
    EXPECT_THAT(log_.entries(), SizeIs(20));
}

TEST_F(RequestLogTest, SaysInOneLineHowManyItOnlyCounted) {
    refuse(stranger_, 1000);
    log_.clear();
    now_ += 59s;
    requests_.summarise();
    EXPECT_THAT(log_.entries(), IsEmpty());
    ASSERT_TRUE(requests_.nextSummary());
    now_ = *requests_.nextSummary();
    requests_.summarise();
    requests_.summarise();
    EXPECT_THAT(log_.entries(), ElementsAre(name_ + ": 980 more refusals within a minute are not listed"));
    EXPECT_FALSE(requests_.nextSummary());
}

TEST_F(RequestLogTest, ListsAgainAfterTheMinute) {
    refuse(stranger_, 21);
    log_.clear();
    now_ += 60s;
    refuse(stranger_, 21);
    EXPECT_THAT(log_.entries(), SizeIs(21)) << "the summary and twenty lines";
    EXPECT_EQ(log_.entries().front(), name_ + ": 1 more refusals within a minute are not listed");
}

TEST_F(RequestLogTest, SaysNothingOfRefusalsThatWereAllListed) {
    refuse(stranger_, 20);
    log_.clear();
    now_ += 60s;
    requests_.summarise();
    requests_.finish();
    EXPECT_THAT(log_.entries(), IsEmpty());
}

TEST_F(RequestLogTest, SaysAtTheEndWhatItOnlyCounted) {
    refuse(stranger_, 22);
    log_.clear();
    requests_.finish();
    EXPECT_THAT(log_.entries(), ElementsAre(name_ + ": 2 more refusals within a minute are not listed"));
}

TEST_F(RequestLogTest, DoesNotLetOneUserHideAnothersRefusal) {
    refuse(stranger_, 1000);
    log_.clear();
    refuse(stranger_ + 1, 1);
    refuse(RequestLog::kUnknown, 1);
    EXPECT_THAT(log_.entries(), SizeIs(2));
}

TEST_F(RequestLogTest, CountsUsersOfManyNumbersTogether) {
    for (uid_t i = 0; i < 10'000; ++i)
        refuse(stranger_ + i, 1);
    EXPECT_LE(log_.entries().size(), 16U * 20U);
    log_.clear();
    requests_.finish();
    EXPECT_THAT(log_.entries(), ElementsAre("other users: 9965 more refusals within a minute are not listed"));
}

TEST_F(RequestLogTest, AlwaysListsRootTheServicesUserAndWhatWasDone) {
    refuse(0, 100);
    refuse(::geteuid(), 100);
    refuse(stranger_, 100);
    log_.clear();
    refuse(0, 1);
    refuse(::geteuid(), 1);
    requests_.write("done");
    EXPECT_THAT(log_.entries(), ElementsAre("refused", "refused", "done"));
}

TEST_F(RequestLogTest, CountsTogetherWithForkedProcesses) {
    for (int i = 0; i < 5; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            refuse(stranger_, 10);
            ::_exit(0);
        }
        ::waitpid(child, nullptr, 0);
    }
    refuse(stranger_, 1);
    EXPECT_THAT(log_.entries(), IsEmpty());
    requests_.finish();
    EXPECT_THAT(log_.entries(), ElementsAre(name_ + ": 31 more refusals within a minute are not listed"));
}

}  // namespace
}  // namespace kestrav
