#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "cli/ServiceAnswers.h"

namespace kestrav {
namespace {

using Texts = std::vector<std::string>;

class TheServicesAnswers : public testing::Test {
  protected:
    void asksToUnmount() { answers_.asked("umount", Texts{"/dev/sdzzs1"}); }
    void asksToWrite() { answers_.asked("dd", Texts{"if=/a", "of=/dev/rsdzz", "seek=1536", "bs=512"}); }

    ServiceAnswers answers_;
};

TEST_F(TheServicesAnswers, AreKeptWithTheirQuestions) {
    asksToUnmount();
    answers_.answered("sdzz1 was not mounted.");
    asksToWrite();
    answers_.unanswered({Unanswered::Why::noReplyInTime, ""});
    ASSERT_EQ(answers_.exchanges().size(), 2U);
    EXPECT_EQ(answers_.exchanges()[0].question.kind, AnswerTo::Kind::unmount);
    EXPECT_EQ(std::get<ServiceAnswers::Given>(answers_.exchanges()[0].end).answer.meaning,
              Answer::Meaning::wasNotMounted);
    EXPECT_EQ(answers_.exchanges()[1].question.kind, AnswerTo::Kind::write);
    EXPECT_EQ(std::get<Unanswered>(answers_.exchanges()[1].end).why, Unanswered::Why::noReplyInTime);
}

TEST_F(TheServicesAnswers, AreNoFailureBeforeTheFirst) {
    EXPECT_FALSE(answers_.saidLastThatItFailed());
    asksToWrite();
    EXPECT_FALSE(answers_.saidLastThatItFailed());
}

TEST_F(TheServicesAnswers, AreAFailureWhenTheLastIsOne) {
    asksToUnmount();
    answers_.answered("sdzz1 was not mounted.");
    asksToWrite();
    answers_.answered("Failed: writing.");
    EXPECT_TRUE(answers_.saidLastThatItFailed());
    asksToWrite();
    answers_.answered("Refused: no.");
    EXPECT_FALSE(answers_.saidLastThatItFailed());
}

TEST_F(TheServicesAnswers, StayAFailureWhileNothingElseIsHeard) {
    asksToUnmount();
    answers_.answered("Failed: busy.");
    asksToWrite();
    answers_.unanswered({Unanswered::Why::noReplyInTime, ""});
    asksToWrite();
    answers_.answered("\xff");
    EXPECT_TRUE(answers_.saidLastThatItFailed());
}

TEST_F(TheServicesAnswers, AreNoFailureAnyMoreWhenTheServiceCannotBeReached) {
    asksToUnmount();
    answers_.answered("Failed: busy.");
    asksToWrite();
    answers_.unanswered({Unanswered::Why::notAccepted, "There is nobody."});
    EXPECT_FALSE(answers_.saidLastThatItFailed());
}

}  // namespace
}  // namespace kestrav
