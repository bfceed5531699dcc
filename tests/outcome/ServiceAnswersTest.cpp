#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "outcome/ServiceAnswers.h"

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

TEST_F(TheServicesAnswers, HaveNoLastOneBeforeTheFirst) {
    EXPECT_EQ(answers_.last(), nullptr);
    asksToUnmount();
    EXPECT_EQ(answers_.last(), nullptr);
    answers_.answered("sdzz1 was not mounted.");
    asksToWrite();
    answers_.answered("\xff");
    ASSERT_NE(answers_.last(), nullptr);
    EXPECT_EQ(answers_.last()->question.kind, AnswerTo::Kind::write);
}

TEST_F(TheServicesAnswers, AreKeptAsTheyCame) {
    asksToWrite();
    answers_.answered("\xff");
    const auto& binary = std::get<ServiceAnswers::Given>(answers_.last()->end);
    EXPECT_EQ(binary.bytes, "\xff");
    EXPECT_FALSE(binary.isText());
    answers_.answered("text");
    EXPECT_TRUE(std::get<ServiceAnswers::Given>(answers_.last()->end).isText());
}

}  // namespace
}  // namespace kestrav
