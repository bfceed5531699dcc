#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <string_view>

#include "base/shownText.h"

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
    EXPECT_EQ(shownText(GetParam().text), GetParam().expected);
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
    EXPECT_EQ(shownText("ääää", 7), "ää...");
    EXPECT_EQ(shownText("ääää", 8), "ääää");
    EXPECT_EQ(shownText("\x1b\x1b\x1b", 10), "\\x1b...");
}

TEST(ShownText, StaysWithinAnyLength) {
    const std::string hostile(50'000, '\x01');
    for (std::size_t limit = 0; limit < 40; ++limit)
        EXPECT_LE(shownText(hostile, limit).size(), limit);
}

struct MisleadingRow {
    std::string_view name;
    std::string_view text;
    std::string_view expected;

    friend void PrintTo(const MisleadingRow& row, std::ostream* out) { *out << row.name; }
};

class Misleading : public testing::TestWithParam<MisleadingRow> {};

TEST_P(Misleading, IsNumberedInAnAnswer) {
    EXPECT_EQ(shownText(GetParam().text), GetParam().expected);
    EXPECT_EQ(shownSentence(GetParam().text, 300), GetParam().expected);
}

TEST_P(Misleading, IsNumberedOnATerminal) {
    EXPECT_EQ(escapedForTerminal(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Misleading,
    testing::Values(MisleadingRow{"ArabicMark", "a\u061cb", "a\\u{61c}b"},
                    MisleadingRow{"Marks", "\u200e\u200f", "\\u{200e}\\u{200f}"},
                    MisleadingRow{"LineAndParagraph", "\u2028\u2029", "\\u{2028}\\u{2029}"},
                    MisleadingRow{"Embeddings", "\u202a\u202b\u202c", "\\u{202a}\\u{202b}\\u{202c}"},
                    MisleadingRow{"Overrides", "gnp\u202e.fds\u202d", "gnp\\u{202e}.fds\\u{202d}"},
                    MisleadingRow{"Isolates", "\u2066\u2067\u2068\u2069", "\\u{2066}\\u{2067}\\u{2068}\\u{2069}"},
                    MisleadingRow{"LastOfTheirRange", "\u206f\U000e007f", "\\u{206f}\\u{e007f}"},
                    MisleadingRow{"OfTheLastPlane", "\U0010200b", "\U0010200b"},
                    MisleadingRow{"WithoutWidth", "\u200b\u2060\ufeff", "\\u{200b}\\u{2060}\\u{feff}"},
                    MisleadingRow{"WithoutShape", "\u00ad\u180e\u3164", "\\u{ad}\\u{180e}\\u{3164}"},
                    MisleadingRow{"Tags", "\U000e0041", "\\u{e0041}"},
                    MisleadingRow{"NeededByScripts", "\u0645\u06cc\u200c\u062e \u0915\u094d\u200d \u2764\ufe0f",
                                  "\u0645\u06cc\u200c\u062e \u0915\u094d\u200d \u2764\ufe0f"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ShownText, TellsAnEscapeFromTheSameLetters) {
    EXPECT_EQ(shownText("\x1b"), "\\x1b");
    EXPECT_EQ(shownText("\\x1b"), "\\\\x1b");
    EXPECT_EQ(shownText("a\\b\\\\"), "a\\\\b\\\\\\\\");
    EXPECT_EQ(escapedForTerminal("\u202e \\u{202e}"), "\\u{202e} \\\\u{202e}");
}

TEST(ShownText, IsNotCutWithinAnEscape) {
    EXPECT_EQ(shownText("\\\\\\", 5), "\\\\...");
    EXPECT_EQ(shownText("\u202e\u202e", 12), "\\u{202e}...");
}

TEST(ShownSentence, KeepsTheEscapesThatItHolds) {
    EXPECT_EQ(shownSentence("the image " + shownText("/a\\b\x1b") + " is empty.", 300),
              "the image /a\\\\b\\x1b is empty.");
    EXPECT_EQ(shownSentence("xxxxxxxx", 5), "xx...");
}

TEST(EscapedForTerminal, LeavesTextAndUtf8Alone) {
    EXPECT_EQ(escapedForTerminal("100 % of \"größe\""), "100 % of \"größe\"");
}

TEST(EscapedForTerminal, ShowsControlCharactersAsHexadecimal) {
    EXPECT_EQ(escapedForTerminal(std::string_view("a\x1b[2J\n\0\x7f", 8)), "a\\x1b[2J\\x0a\\x00\\x7f");
}

TEST(EscapedForTerminal, ShowsTheUpperControlCharactersAsHexadecimal) {
    EXPECT_EQ(escapedForTerminal("\u0080 \u009b2J \u009f \u00a0"), "\\xc2\\x80 \\xc2\\x9b2J \\xc2\\x9f \u00a0");
}

TEST(EscapedForTerminal, ShowsWhatIsNotUtf8AsHexadecimal) {
    EXPECT_EQ(escapedForTerminal("a\xff\xc3"), "a\\xff\\xc3");
}

struct DebugRow {
    std::string_view name;
    std::string_view text;
    std::string_view expected;

    friend void PrintTo(const DebugRow& row, std::ostream* out) { *out << row.name; }
};

class DebugForm : public testing::TestWithParam<DebugRow> {};

TEST_P(DebugForm, IsWhatStandsInSourceCode) {
    EXPECT_EQ(debugForm(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Rows, DebugForm,
                         testing::Values(DebugRow{"Empty", "", "\"\""}, DebugRow{"Text", "größe %s", "\"größe %s\""},
                                         DebugRow{"Quotes", "a\"'\\", R"("a\"\'\\")"},
                                         DebugRow{"WhiteSpace", "\t\n\r\0"sv, R"("\t\n\r\0")"},
                                         DebugRow{"Controls", "\x01\x1f\x7f"sv, R"("\u{01}\u{1F}\u{7F}")"},
                                         DebugRow{"OtherBytes", "\xc2\x9b\xff"sv, "\"\xc2\x9b\xff\""}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Hexadecimal, ShowsEachByteAsTwoDigits) {
    EXPECT_EQ(hexadecimal("\0\x1f\xfa"sv), "001ffa");
    EXPECT_EQ(hexadecimal(""), "");
}

}  // namespace
}  // namespace kestrav
