#include <gtest/gtest.h>
#include <string>

#include "base/utf8.h"

namespace kestrav {
namespace {

struct Row {
    const char* name;
    std::string text;
    std::size_t valid;
};

class ValidUTF8Length : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(
    Sequences, ValidUTF8Length,
    testing::Values(Row{"Empty", "", 0}, Row{"Ascii", "plain text", 10}, Row{"Zero", std::string("a\0b", 3), 3},
                    Row{"LowestOfTwo", "\xC2\x80", 2}, Row{"HighestOfTwo", "\xDF\xBF", 2},
                    Row{"LowestOfThree", "\xE0\xA0\x80", 3}, Row{"BelowSurrogates", "\xED\x9F\xBF", 3},
                    Row{"HighestOfThree", "\xEF\xBF\xBF", 3}, Row{"LowestOfFour", "\xF0\x90\x80\x80", 4},
                    Row{"HighestOfFour", "\xF4\x8F\xBF\xBF", 4}, Row{"LoneContinuation", "a\x80", 1},
                    Row{"OverlongSlash", "ab\xC0\xAF", 2}, Row{"OverlongTwo", "\xC1\xBF", 0},
                    Row{"OverlongThree", "\xE0\x9F\xBF", 0}, Row{"OverlongFour", "\xF0\x8F\xBF\xBF", 0},
                    Row{"FirstSurrogate", "\xED\xA0\x80", 0}, Row{"LastSurrogate", "\xED\xBF\xBF", 0},
                    Row{"AboveTheLast", "\xF4\x90\x80\x80", 0}, Row{"LeadF5", "\xF5\x80\x80\x80", 0},
                    Row{"LeadFF", "\xFF", 0}, Row{"CutTwo", "abc\xC3", 3}, Row{"CutThree", "\xE2\x82", 0},
                    Row{"CutFour", "\xF0\x9F\x98", 0}, Row{"BadSecond", "\xC3(", 0}, Row{"BadThird", "\xE2\x82(", 0},
                    Row{"BadFourth", "\xF0\x9F\x98(", 0}, Row{"BehindAWord", "12345678\xFF", 8},
                    Row{"AcrossWords",
                        "1234567\xC3\xA9"
                        "2345678\xE2\x82\xAC"
                        "9\xFF",
                        20}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(ValidUTF8Length, EndsAtTheFirstBadSequence) {
    EXPECT_EQ(validUTF8Length(GetParam().text), GetParam().valid);
    EXPECT_EQ(isValidUTF8(GetParam().text), GetParam().valid == GetParam().text.size());
}

}  // namespace
}  // namespace kestrav
