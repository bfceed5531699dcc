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

/// Which bytes the Unicode Standard lets follow each other, in its table "Well-Formed UTF-8 Byte Sequences".
struct WellFormed {
    int firstLowest, firstHighest, secondLowest, secondHighest;
    std::size_t length;
};
constexpr WellFormed kWellFormed[] = {
    {0x00, 0x7F, 0x00, 0xFF, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

std::size_t lengthByTheTable(const std::string& bytes) {
    const auto byte = [&bytes](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
    for (const WellFormed& row : kWellFormed) {
        if (byte(0) < row.firstLowest || byte(0) > row.firstHighest) continue;
        if (byte(1) < row.secondLowest || byte(1) > row.secondHighest) continue;
        bool continued = true;
        for (std::size_t at = 2; at < row.length; ++at)
            continued = continued && byte(at) >= 0x80 && byte(at) <= 0xBF;
        if (continued) return row.length;
    }
    return 0;
}

TEST(ValidUTF8SequenceLength, IsThatOfUnicodesTableForEveryTwoBytesAndWhatFollowsThem) {
    constexpr int kFollowing[] = {0x7F, 0x80, 0xBF, 0xC0};
    for (int first = 0; first < 0x100; ++first)
        for (int second = 0; second < 0x100; ++second)
            for (const int third : kFollowing)
                for (const int fourth : kFollowing) {
                    std::string bytes;
                    for (const int byte : {first, second, third, fourth})
                        bytes += static_cast<char>(byte);
                    ASSERT_EQ(validUTF8SequenceLength(bytes), lengthByTheTable(bytes))
                        << std::hex << first << ' ' << second << ' ' << third << ' ' << fourth;
                }
    EXPECT_EQ(validUTF8SequenceLength(""), 0U);
}

TEST(RepairedUTF8, HasAReplacementForEachByteThatBelongsToNothing) {
    EXPECT_EQ(repairedUTF8("well-formed: \xC3\xA9"), "well-formed: \xC3\xA9");
    EXPECT_EQ(repairedUTF8("a\xFF"
                           "b"),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(repairedUTF8("\xE2\x82"), "\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(repairedUTF8("\xC3\xC3\xA9"), "\xEF\xBF\xBD\xC3\xA9");
    EXPECT_EQ(repairedUTF8(""), "");
}

}  // namespace
}  // namespace kestrav
