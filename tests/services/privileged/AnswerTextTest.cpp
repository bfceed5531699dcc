#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <string_view>

#include "services/privileged/AnswerText.h"

namespace kestrav {
namespace {

struct ShownRow {
    std::string_view name;
    std::string_view text;
    std::string_view expected;

    friend void PrintTo(const ShownRow& row, std::ostream* out) { *out << row.name; }
};

class Shown : public testing::TestWithParam<ShownRow> {};

TEST_P(Shown, IsHarmlessUtf8) {
    EXPECT_EQ(shown(GetParam().text), GetParam().expected);
}

using namespace std::string_view_literals;

INSTANTIATE_TEST_SUITE_P(
    Rows, Shown,
    testing::Values(ShownRow{"Text", "größe 100 %s", "größe 100 %s"},
                    ShownRow{"FourByteCharacter", "\xf0\x9f\x93\x80", "\xf0\x9f\x93\x80"},
                    ShownRow{"Escape", "\x1b[2J", "\\x1b[2J"}, ShownRow{"LineEnd", "a\r\nb", "a\\x0d\\x0ab"},
                    ShownRow{"Zero", "a\0b"sv, "a\\x00b"}, ShownRow{"Delete", "\x7f", "\\x7f"},
                    ShownRow{"C1Control",
                             "\xc2\x9b"
                             "2J",
                             "\\x9b2J"},
                    ShownRow{"StrayByte",
                             "a\xff"
                             "b",
                             "a\xef\xbf\xbd"
                             "b"},
                    ShownRow{"CutCharacter", "a\xe2\x82", "a\xef\xbf\xbd\xef\xbf\xbd"},
                    ShownRow{"Overlong", "\xc0\xaf", "\xef\xbf\xbd\xef\xbf\xbd"},
                    ShownRow{"OverlongThree", "\xe0\x80\xaf", "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"},
                    ShownRow{"Surrogate", "\xed\xa0\x80", "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"},
                    ShownRow{"Empty", "", ""}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ShownText, IsCutBetweenCharacters) {
    EXPECT_EQ(shown("ääää", 7), "ää...");
    EXPECT_EQ(shown("ääää", 8), "ääää");
    EXPECT_EQ(shown("\x1b\x1b\x1b", 10), "\\x1b...");
}

TEST(ShownText, StaysWithinAnyLength) {
    const std::string hostile(50'000, '\x01');
    for (std::size_t limit = 0; limit < 40; ++limit)
        EXPECT_LE(shown(hostile, limit).size(), limit);
}

TEST(AnswerFor, TellsRefusalsFromFailures) {
    EXPECT_EQ(answerFor(refused("no.")), "Refused: no.");
    EXPECT_EQ(answerFor(failed("no.")), "Failed: no.");
}

TEST(AnswerFor, FitsIntoOneReadOfTheUpdater) {
    EXPECT_EQ(answerFor(refused(std::string(20'000, 'x'))).size(), longestAnswer);
}

}  // namespace
}  // namespace kestrav
