#include <cmath>
#include <gtest/gtest.h>

#include "json/tree/dataWithJSONObject.h"
#include "json/tree/readJSON.h"

namespace kestrav {
namespace {

const std::string kBom = "\xEF\xBB\xBF";

std::variant<Tree, ReadError> readAny(std::string_view json) {
    return readJSON(json, ReadingOptions::allowFragments);
}

std::string rewritten(std::string_view json) {
    const auto result = readJSON(json);
    if (const auto* error = std::get_if<ReadError>(&result)) return error->message;
    return dataWithJSONObject(std::get<Tree>(result));
}

Number numberIn(std::string_view json) {
    const auto result = readAny(json);
    const Tree* tree = std::get_if<Tree>(&result);
    return tree != nullptr && tree->number() ? *tree->number() : Number(Decimal{.notANumber = true});
}

TEST(Reader, ReadsWhatTheWriterWrites) {
    const std::string json = R"({"a":[1,-2,3.5,true,false,null],"b":{"c":"d\n\"é😀"},"e":[],"f":{}})";
    EXPECT_EQ(rewritten(json), json);
}

TEST(Reader, LetsTheLastOfEqualKeysWin) {
    EXPECT_EQ(rewritten(R"({"a":1,"b":2,"a":3})"), R"({"a":3,"b":2})");
    EXPECT_EQ(rewritten(R"({"a longer key than that":1,"b":2,"a longer key than that":3})"),
              R"({"a longer key than that":3,"b":2})");
    EXPECT_EQ(rewritten(R"({"a":1,"\u0061":2})"), R"({"a":2})");
}

TEST(Reader, LetsTheLastOfEqualKeysWinAmongMany) {
    std::string json = "{";
    for (int round = 0; round < 2; ++round) {
        for (int at = 0; at < 100; ++at) {
            json += (json.size() > 1 ? ",\"key" : "\"key") + std::to_string(at) + "\":" + std::to_string(round);
        }
    }
    const auto result = readJSON(json + "}");
    const Tree& map = std::get<Tree>(result);
    ASSERT_EQ(map.size(), 100U);
    for (std::size_t at = 0; at < 100; ++at)
        EXPECT_EQ(map.valueAt(at).number()->integer(), 1);
}

TEST(Reader, TakesFragmentsOnlyWhenAllowed) {
    for (const char* json : {"42", "\"text\"", "true", "null", " 1.5 "}) {
        EXPECT_TRUE(std::holds_alternative<Tree>(readAny(json))) << json;
        const auto strict = readJSON(json);
        ASSERT_TRUE(std::holds_alternative<ReadError>(strict)) << json;
        EXPECT_EQ(std::get<ReadError>(strict).offset, 0U);
    }
    EXPECT_TRUE(std::holds_alternative<Tree>(readJSON("[]")));
    EXPECT_EQ(static_cast<unsigned>(ReadingOptions::allowFragments), 4U);
}

struct TextRow {
    const char* json;
    std::string text;
};

class ReaderText : public testing::TestWithParam<TextRow> {};
INSTANTIATE_TEST_SUITE_P(
    Texts, ReaderText,
    testing::Values(TextRow{R"("")", ""}, TextRow{R"("\"\\\/\b\f\n\r\t")", "\"\\/\b\f\n\r\t"},
                    TextRow{R"("\u0041\u00e9\u20AC")", "A\xC3\xA9\xE2\x82\xAC"},
                    TextRow{R"("\uD83D\uDE00")", "\xF0\x9F\x98\x80"},
                    TextRow{R"("\ud83d\ude00 and on")", "\xF0\x9F\x98\x80 and on"},
                    TextRow{R"("\u0000")", std::string(1, '\0')}, TextRow{"\"\x7F\"", "\x7F"},
                    TextRow{"\"\xF4\x8F\xBF\xBF\"", "\xF4\x8F\xBF\xBF"}, TextRow{R"("\uFFFF")", "\xEF\xBF\xBF"},
                    // Where one length of UTF-8 ends and the next begins.
                    TextRow{R"("\u007f\u0080")", "\x7F\xC2\x80"}, TextRow{R"("\u07ff\u0800")", "\xDF\xBF\xE0\xA0\x80"},
                    TextRow{R"("\ud800\udc00")", "\xF0\x90\x80\x80"}, TextRow{R"("\udbff\udfff")", "\xF4\x8F\xBF\xBF"},
                    // Beside the surrogates.
                    TextRow{R"("\ud7ff\ue000")", "\xED\x9F\xBF\xEE\x80\x80"}),
    [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(ReaderText, IsReadWithItsEscapes) {
    const auto result = readAny(GetParam().json);
    ASSERT_TRUE(std::holds_alternative<Tree>(result));
    EXPECT_EQ(std::get<Tree>(result).text(), GetParam().text);
}

TEST(Reader, JoinsLongTextsFromTheirPieces) {
    // Longer than any buffer of the parser, with an escape in front of, in and behind the middle.
    const std::string piece(10'000, 'x');
    const auto result = readAny("\"\\n" + piece + "\\t" + piece + "\\u00e9\"");
    ASSERT_TRUE(std::holds_alternative<Tree>(result));
    EXPECT_EQ(std::get<Tree>(result).text(), "\n" + piece + "\t" + piece + "\xC3\xA9");
}

TEST(Reader, JoinsLongKeysFromTheirPieces) {
    const std::string piece(10'000, 'k');
    const auto result = readJSON("{\"" + piece + "\\n\":[]}");
    ASSERT_TRUE(std::holds_alternative<Tree>(result));
    EXPECT_NE(std::get<Tree>(result).member(piece + "\n"), nullptr);
}

struct Refused {
    std::string json;
    std::size_t offset;
};

class ReaderError : public testing::TestWithParam<Refused> {};
INSTANTIATE_TEST_SUITE_P(
    Documents, ReaderError,
    testing::Values(
        Refused{"", 0}, Refused{"   ", 3}, Refused{"[", 1}, Refused{"[1", 2}, Refused{"[1,", 3}, Refused{"[1,]", 3},
        Refused{"[,1]", 1}, Refused{"[1 2]", 3}, Refused{"]", 0}, Refused{"{", 1}, Refused{"{\"a\"", 4},
        Refused{"{\"a\" 1}", 5}, Refused{"{\"a\":}", 5}, Refused{"{\"a\":1,}", 7}, Refused{"{\"a\":1]", 6},
        Refused{"{\"a\":1 2}", 7}, Refused{"{a:1}", 1}, Refused{"{1:1}", 1}, Refused{"[1] x", 4}, Refused{"[1]]", 3},
        Refused{"{}{}", 2}, Refused{kBom + "[]", 0}, Refused{"[tru]", 1}, Refused{"[True]", 1}, Refused{"[nul", 4},
        Refused{"[nux", 3}, Refused{"[tx", 2}, Refused{"[falx", 4}, Refused{"[NaN]", 1}, Refused{"[Infinity]", 1},
        Refused{"['a']", 1}, Refused{"[\"a]", 4}, Refused{"[01]", 2}, Refused{"[+1]", 1}, Refused{"[.5]", 1},
        Refused{"[1.]", 3}, Refused{"[-]", 2}, Refused{"[1e]", 3}, Refused{"[1e+]", 4}, Refused{"[0x10]", 2},
        Refused{"[1,//c\n2]", 3}, Refused{"/**/[]", 0}, Refused{"[\"\t\"]", 2}, Refused{"[\"a\nb\"]", 3},
        Refused{std::string("[\"\0\"]", 5), 2}, Refused{std::string("[]\0", 3), 2}, Refused{"[\"\\x\"]", 3},
        Refused{"[\"\\u12\"]", 6}, Refused{"[\"\\u000g\"]", 7}, Refused{"[\"\\u000`\"]", 7},
        Refused{"[\"\\u000/\"]", 7}, Refused{"[\"\\u000:\"]", 7}, Refused{"[\"\xFF\"]", 2}, Refused{"[\"ab\xC3(\"]", 4},
        Refused{"[\"\xC0\xAF\"]", 2}, Refused{"[\"\xED\xA0\x80\"]", 2}, Refused{"[\"\xF4\x90\x80\x80\"]", 2},
        Refused{"[\"\xE2\x82\"]", 2}, Refused{"[\xC3\xA9]", 1}, Refused{"[1e99999999999]", 12},
        Refused{"[1e1000000000]", 13}, Refused{"[0.00001e2147483648]", 18}, Refused{"[\v1]", 1},
        Refused{"[\xC2\xA0"
                "1]",
                1},
        Refused{"[1,2", 4},
        // What the end cuts off may have been good: the fault is there. What could not, is one itself.
        Refused{"[\"\xC3", 3}, Refused{"[\"\xC3(", 2}, Refused{"[\"\xC0", 2}, Refused{"[\"\xC1", 2},
        Refused{"[\"\xE2\x82", 4}, Refused{"[\"\xF4\x8F\xBF", 5}, Refused{"[\"\xF5\x80", 2}),
    [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(ReaderError, TellsTheByte) {
    const auto result = readJSON(GetParam().json);
    ASSERT_TRUE(std::holds_alternative<ReadError>(result));
    EXPECT_FALSE(std::get<ReadError>(result).message.empty());
    EXPECT_EQ(std::get<ReadError>(result).offset, GetParam().offset);
}

class LoneSurrogate : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(Texts, LoneSurrogate,
                         testing::Values(R"(["\uD800"])", R"(["\uDC00"])", R"(["\uD800x"])", R"(["\uD800\n"])",
                                         R"(["\uD800A"])", R"(["\uDE00\uD83D"])", R"(["\uD83D\uD83D and more"])",
                                         R"(["\uDC00 with something behind"])", R"(["\uD800\uE000"])",
                                         R"(["\uDC00\uDC00"])", R"(["\uD800\uDBFF"])", R"(["\uDFFF"])",
                                         R"(["\uDBFF\u0041"])"));

TEST_P(LoneSurrogate, IsAnErrorWithinTheText) {
    const auto result = readJSON(GetParam());
    ASSERT_TRUE(std::holds_alternative<ReadError>(result));
    EXPECT_GE(std::get<ReadError>(result).offset, 2U);
    EXPECT_LT(std::get<ReadError>(result).offset, std::string_view(GetParam()).size());
}

struct NumberRow {
    const char* json;
    Number::Kind kind;
    const char* text;
};

constexpr auto kInteger = Number::Kind::integer;
constexpr auto kUnsigned = Number::Kind::unsignedInteger;
constexpr auto kFloating = Number::Kind::floating;
constexpr auto kDecimal = Number::Kind::decimal;

class ReaderNumber : public testing::TestWithParam<NumberRow> {};
INSTANTIATE_TEST_SUITE_P(
    Numbers, ReaderNumber,
    testing::Values(
        NumberRow{"0", kInteger, "0"}, NumberRow{"-0", kFloating, "-0"}, NumberRow{"-0.0", kFloating, "-0"},
        NumberRow{"9223372036854775807", kInteger, "9223372036854775807"},
        NumberRow{"-9223372036854775808", kInteger, "-9223372036854775808"},
        NumberRow{"9223372036854775808", kUnsigned, "9223372036854775808"},
        NumberRow{"18446744073709551615", kUnsigned, "18446744073709551615"},
        NumberRow{"18446744073709551616", kDecimal, "18446744073709551616"},
        NumberRow{"-9223372036854775809", kDecimal, "-9223372036854775809"},
        // Multiples of 2^64, which are nothing to whoever counts in 64 bits.
        NumberRow{"184467440737095516160", kDecimal, "184467440737095516160"},
        NumberRow{"18446744073709551616.5", kDecimal, "18446744073709551616.5"},
        NumberRow{"100000000000000000000", kDecimal, "100000000000000000000"},
        NumberRow{"12345678901234567890123456789012345678", kDecimal, "12345678901234567890123456789012345678"},
        NumberRow{"10000000000000000000000000000000000000", kDecimal, "10000000000000000000000000000000000000"},
        NumberRow{"100000000000000000000000000000000000000", kFloating, "1e+38"}, NumberRow{"1.0", kFloating, "1"},
        NumberRow{"1e2", kFloating, "100"}, NumberRow{"0.1", kFloating, "0.1"}, NumberRow{"1E-7", kFloating, "1e-07"},
        NumberRow{"0.30000000000000004", kFloating, "0.30000000000000004"},
        NumberRow{"0.000000000000000000000000000001", kFloating, "1e-30"},
        NumberRow{"1.50000000000000000000000000", kFloating, "1.5"},
        NumberRow{"0.100000000000000001", kDecimal, "0.100000000000000001"},
        NumberRow{"3.1415926535897932384626433832795028841", kDecimal, "3.1415926535897932384626433832795028841"},
        NumberRow{"1.7976931348623157e308", kFloating, "1.7976931348623157e+308"},
        // Nothing but zeros is left of what lies behind 38 digits.
        NumberRow{"-92233720368540000000000000000000000000000000000000000139957801930009064", kFloating,
                  "-9.223372036854e+70"},
        NumberRow{"1.8e308", kDecimal, "1.8e+308"}, NumberRow{"-1e400", kDecimal, "-1e+400"},
        NumberRow{"1e-400", kDecimal, "1e-400"}, NumberRow{"5e-324", kFloating, "5e-324"},
        NumberRow{"0e99999", kFloating, "0"}, NumberRow{"0e2147483648", kFloating, "0"},
        NumberRow{"-0.000e-99999999999999999999", kFloating, "-0"},
        NumberRow{"2.2250738585072011e-308", kFloating, "2.225073858507201e-308"},
        NumberRow{"9007199254740993.0", kFloating, "9.007199254740992e+15"},
        // As long as a text can be with 17 digits that matter, and with one more.
        NumberRow{"0.12345678901234567", kFloating, "0.12345678901234566"},
        NumberRow{"0.123456789012345678", kDecimal, "0.123456789012345678"},
        NumberRow{"1.23456789012345678", kDecimal, "1.23456789012345678"},
        NumberRow{"-1.2345678901234567", kFloating, "-1.2345678901234567"},
        NumberRow{"-1.23456789012345678", kDecimal, "-1.23456789012345678"}),
    [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(ReaderNumber, KeepsTheValueInTheKindThatHoldsIt) {
    const Number number = numberIn(GetParam().json);
    EXPECT_EQ(number.kind(), GetParam().kind);
    EXPECT_EQ(number.stringValue(), GetParam().text);
}

TEST_P(ReaderNumber, ReadsItsOwnTextAsTheSameNumber) {
    const Number number = numberIn(GetParam().json);
    EXPECT_TRUE(numberIn(number.stringValue()) == number);
}

TEST(Reader, KeepsTheSignOfMinusZero) {
    EXPECT_TRUE(std::signbit(numberIn("-0").floating()));
    EXPECT_TRUE(std::signbit(numberIn("-0e5").floating()));
    EXPECT_EQ(rewritten("[-0]"), "[-0]");
}

TEST(ReaderDepth, IsLimited) {
    const auto nested = [](std::size_t levels) { return std::string(levels, '[') + std::string(levels, ']'); };
    EXPECT_TRUE(std::holds_alternative<Tree>(readJSON(nested(kMaxReadingDepth))));
    const auto deeper = readJSON(nested(kMaxReadingDepth + 1));
    ASSERT_TRUE(std::holds_alternative<ReadError>(deeper));
    EXPECT_EQ(std::get<ReadError>(deeper).offset, kMaxReadingDepth);
}

TEST(ReaderDepth, MakesAMillionOpeningBracketsAnError) {
    const auto result = readJSON(std::string(1'000'000, '['));
    ASSERT_TRUE(std::holds_alternative<ReadError>(result));
    EXPECT_EQ(std::get<ReadError>(result).message, "too deep");
    EXPECT_EQ(std::get<ReadError>(result).offset, kMaxReadingDepth);
}

TEST(ReaderDepth, MakesAMillionOpeningBracesAnError) {
    std::string json;
    for (int at = 0; at < 1'000'000; ++at)
        json += "{\"a\":";
    EXPECT_TRUE(std::holds_alternative<ReadError>(readJSON(json)));
}

}  // namespace
}  // namespace kestrav
