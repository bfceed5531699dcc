#include <gtest/gtest.h>
#include <limits>

#include "json/value/JSON.h"
#include "json/value/decodedText.h"

namespace kestrav {
namespace {

using json::decodedText;
using json::TextEncoding;

class Lamp : public TreeObject {};

std::string textOf(const std::vector<std::byte>& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(JSONRawData, IsTheJSONText) {
    const JSON json = JSON::parse(R"( {"a" : [1, "é"]} )");
    EXPECT_EQ(textOf(json.rawData()), R"({"a":[1,"é"]})");
    EXPECT_EQ(textOf(json.rawData(WritingOptions::prettyPrinted)), "{\n  \"a\": [\n    1,\n    \"é\"\n  ]\n}");
}

class InvalidJSON : public testing::TestWithParam<Tree> {};
INSTANTIATE_TEST_SUITE_P(Trees, InvalidJSON,
                         testing::Values(Tree(1), Tree("x"), Tree(true), Tree(), Tree(std::make_shared<const Lamp>()),
                                         Tree::list({Tree(std::make_shared<const Lamp>())}),
                                         Tree::list({Tree(std::numeric_limits<double>::infinity())}),
                                         Tree::list({Tree("\xFF")})),
                         [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(InvalidJSON, IsRaisedByRawData) {
    try {
        JSON(GetParam()).rawData();
        FAIL() << "nothing was raised";
    } catch (const JSONException& raised) {
        EXPECT_EQ(raised.error().domain, "JSONErrorDomain");
        EXPECT_EQ(raised.error().code, 490);
        EXPECT_EQ(raised.error().localizedDescription(), "JSON is invalid");
        EXPECT_STREQ(raised.what(), "JSON is invalid");
    }
}

struct Row {
    const char* name;
    JSON json;
    std::optional<std::string> text;
};

class JSONRawString : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(Kinds, JSONRawString,
                         testing::Values(Row{"Array", JSON::parse("[1, 2]"), "[1,2]"},
                                         Row{"Dictionary", JSON::parse("{\"a\" :1}"), "{\"a\":1}"},
                                         Row{"String", JSON("plain"), "plain"}, Row{"Number", JSON(2.5), "2.5"},
                                         Row{"True", JSON(true), "true"}, Row{"False", JSON(false), "false"},
                                         Row{"Null", JSON(), "null"}, Row{"Missing", JSON()["missing"], "null"},
                                         Row{"Unknown", JSON(Tree(std::make_shared<const Lamp>())), std::nullopt},
                                         Row{"InvalidArray", JSON(Tree::list({Tree("\xFF")})), std::nullopt}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(JSONRawString, IsByKind) {
    EXPECT_EQ(GetParam().json.rawString(TextEncoding::utf8), GetParam().text);
}

TEST(JSONRawString, TakesWritingOptions) {
    EXPECT_EQ(JSON::parse("[1]").rawString(TextEncoding::utf8, WritingOptions::prettyPrinted), "[\n  1\n]");
}

TEST(JSONRawString, IsAbsentWhenTheBytesAreNotOfTheEncoding) {
    EXPECT_EQ(JSON::parse("[\"x\"]").rawString(TextEncoding::ascii), "[\"x\"]");
    EXPECT_EQ(JSON::parse("[\"\xC3\xA9\"]").rawString(TextEncoding::ascii), std::nullopt);
    EXPECT_EQ(JSON::parse("[\"\xC3\xA9\"]").rawString(TextEncoding::isoLatin1), "[\"\xC3\x83\xC2\xA9\"]");
    EXPECT_EQ(JSON::parse("[1]").rawString(TextEncoding::utf16BigEndian), std::nullopt);
    // The texts of other kinds are not encoded.
    EXPECT_EQ(JSON("\xC3\xA9").rawString(TextEncoding::ascii), "\xC3\xA9");
}

struct EncodedRow {
    std::string bytes;
    TextEncoding encoding;
    std::optional<std::string> text;
};

class DecodedText : public testing::TestWithParam<EncodedRow> {};
INSTANTIATE_TEST_SUITE_P(
    Bytes, DecodedText,
    testing::Values(EncodedRow{"ab", TextEncoding::ascii, "ab"}, EncodedRow{"\x80", TextEncoding::ascii, std::nullopt},
                    EncodedRow{"\xC3\xA9", TextEncoding::utf8, "\xC3\xA9"},
                    EncodedRow{"\xC3", TextEncoding::utf8, std::nullopt},
                    EncodedRow{"\xE9", TextEncoding::isoLatin1, "\xC3\xA9"},
                    EncodedRow{std::string("\0a", 2), TextEncoding::utf16BigEndian, "a"},
                    EncodedRow{std::string("a\0", 2), TextEncoding::utf16LittleEndian, "a"},
                    EncodedRow{"abc", TextEncoding::utf16LittleEndian, std::nullopt},
                    EncodedRow{std::string("\0\xD8", 2), TextEncoding::utf16LittleEndian, std::nullopt},
                    EncodedRow{"", TextEncoding::utf16LittleEndian, ""}),
    [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(DecodedText, IsUtf8OrAbsent) {
    EXPECT_EQ(decodedText(GetParam().bytes, GetParam().encoding), GetParam().text);
}

}  // namespace
}  // namespace kestrav
