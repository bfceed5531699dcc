#include <gtest/gtest.h>
#include <string>

#include "base/shownText.h"
#include "services/gate/answerFor.h"

namespace kestrav {
namespace {

TEST(AnswerFor, TellsRefusalsFromFailures) {
    EXPECT_EQ(answerFor(refused("no.")), "Refused: no.");
    EXPECT_EQ(answerFor(failed("no.")), "Failed: no.");
}

TEST(AnswerFor, HoldsNothingThatMisleads) {
    EXPECT_EQ(answerFor(refused("no \u202e\u2028\x1b.")), "Refused: no \\u{202e}\\u{2028}\\x1b.");
}

TEST(AnswerFor, EscapesOnceWhatIsEscapedAlready) {
    EXPECT_EQ(answerFor(refused(shownText("\\\x1b") + " is not a command of this service.")),
              "Refused: \\\\\\x1b is not a command of this service.");
}

TEST(AnswerFor, FitsIntoOneReadOfTheUpdater) {
    EXPECT_EQ(answerFor(refused(std::string(20'000, 'x'))).size(), kLongestAnswer);
}

}  // namespace
}  // namespace kestrav
