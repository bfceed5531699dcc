#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "services/jobs/QuestionLine.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Reply = QuestionLine::Reply;

const std::string kWindow = "process 100 5 1000";
const std::string kOther = "process 101 6 1000";
const std::string kNo = "an administrator did not agree.";

Reply turnOf(pid_t who) {
    return {who, std::nullopt};
}

class QuestionLineTest : public testing::Test {
  protected:
    QuestionLine line_;
    QuestionLine::Time now_ = QuestionLine::Time::clock::now();
};

TEST_F(QuestionLineTest, LetsOneOfASubjectAskAtATime) {
    EXPECT_THAT(line_.ask(1, kWindow, now_), ElementsAre(turnOf(1)));
    EXPECT_THAT(line_.ask(2, kWindow, now_), IsEmpty());
    EXPECT_THAT(line_.ask(3, kWindow, now_), IsEmpty());
    EXPECT_TRUE(line_.isAsking(1));
    EXPECT_FALSE(line_.isAsking(2));
    EXPECT_THAT(line_.over(1, std::nullopt, now_), ElementsAre(turnOf(2)));
    EXPECT_THAT(line_.over(2, std::nullopt, now_), ElementsAre(turnOf(3)));
    EXPECT_THAT(line_.over(3, std::nullopt, now_), IsEmpty());
    EXPECT_THAT(line_.ask(4, kWindow, now_), ElementsAre(turnOf(4)));
}

TEST_F(QuestionLineTest, KeepsNobodyWaitingForAnotherSubject) {
    line_.ask(1, kWindow, now_);
    EXPECT_THAT(line_.ask(2, kOther, now_), ElementsAre(turnOf(2)));
}

TEST_F(QuestionLineTest, HandsANoToAllWhoWait) {
    line_.ask(1, kWindow, now_);
    line_.ask(2, kWindow, now_);
    line_.ask(3, kWindow, now_);
    EXPECT_THAT(line_.over(1, kNo, now_), ElementsAre(Reply{2, kNo}, Reply{3, kNo}));
    EXPECT_THAT(line_.ask(4, kWindow, now_), ElementsAre(turnOf(4))) << "the no was kept although somebody had it";
}

TEST_F(QuestionLineTest, LosesNoNoOnARequestThatIsGivenUp) {
    line_.ask(1, kWindow, now_);
    line_.ask(2, kWindow, now_);
    line_.giveUp(2);
    line_.giveUp(1);
    EXPECT_TRUE(line_.isAsking(1)) << "a question that is open goes on";
    EXPECT_THAT(line_.over(1, kNo, now_), IsEmpty());
    EXPECT_THAT(line_.leave(2, now_), IsEmpty());
    EXPECT_THAT(line_.ask(3, kWindow, now_ + 9s), ElementsAre(Reply{3, kNo}));
}

TEST_F(QuestionLineTest, HandsANoToOneFurtherRequestOfTheSameSubject) {
    line_.ask(1, kWindow, now_);
    line_.over(1, kNo, now_);
    EXPECT_THAT(line_.ask(2, kOther, now_), ElementsAre(turnOf(2)));
    EXPECT_THAT(line_.ask(3, kWindow, now_ + 9s), ElementsAre(Reply{3, kNo}));
    EXPECT_FALSE(line_.isAsking(3));
    EXPECT_THAT(line_.ask(4, kWindow, now_ + 9s), ElementsAre(turnOf(4)));
}

TEST_F(QuestionLineTest, ForgetsANoAfterTenSeconds) {
    line_.ask(1, kWindow, now_);
    line_.over(1, kNo, now_);
    EXPECT_THAT(line_.ask(2, kWindow, now_ + 10s), ElementsAre(turnOf(2)));
}

TEST_F(QuestionLineTest, KeepsNoMoreThanSoManyNos) {
    for (pid_t who = 1; who <= 300; ++who) {
        line_.ask(who, std::to_string(who), now_);
        line_.over(who, kNo, now_);
    }
    EXPECT_THAT(line_.ask(1001, "256", now_), ElementsAre(Reply{1001, kNo}));
    EXPECT_THAT(line_.ask(1002, "257", now_), ElementsAre(turnOf(1002)));
}

TEST_F(QuestionLineTest, PassesTheTurnOfOneThatHasEnded) {
    line_.ask(1, kWindow, now_);
    line_.ask(2, kWindow, now_);
    line_.ask(3, kWindow, now_);
    EXPECT_THAT(line_.leave(2, now_), IsEmpty());
    EXPECT_THAT(line_.leave(1, now_), ElementsAre(turnOf(3)));
    EXPECT_THAT(line_.leave(3, now_), IsEmpty());
    EXPECT_THAT(line_.leave(3, now_), IsEmpty());
    EXPECT_THAT(line_.ask(4, kWindow, now_), ElementsAre(turnOf(4)));
}

TEST_F(QuestionLineTest, TakesNoWordFromOneWhoDoesNotAsk) {
    line_.ask(1, kWindow, now_);
    line_.ask(2, kWindow, now_);
    EXPECT_THAT(line_.over(2, kNo, now_), IsEmpty());
    EXPECT_THAT(line_.over(7, kNo, now_), IsEmpty());
    EXPECT_TRUE(line_.isAsking(1));
    EXPECT_THAT(line_.over(1, std::nullopt, now_), ElementsAre(turnOf(2)));
}

}  // namespace
}  // namespace kestrav
