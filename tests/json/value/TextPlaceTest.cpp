#include <gtest/gtest.h>

#include "json/value/JSON.h"
#include "json/value/TextPlace.h"

namespace kestrav {
namespace {

using json::TextPlace;

struct Row {
    const char* name;
    std::string text;
    std::size_t offset;
    TextPlace place;
};

class PlaceInText : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(
    Offsets, PlaceInText,
    testing::Values(Row{"Beginning", "abc", 0, {0, 1, 1}}, Row{"InTheFirstLine", "abc", 2, {2, 1, 3}},
                    Row{"End", "abc", 3, {3, 1, 4}}, Row{"BeyondTheEnd", "abc", 9, {3, 1, 4}},
                    Row{"AtALineEnd", "a\nb", 1, {1, 1, 2}}, Row{"AfterALineEnd", "a\nb", 2, {2, 2, 1}},
                    Row{"AfterTwoLineEnds", "\n\nb", 2, {2, 3, 1}}, Row{"AfterABareReturn", "a\rb", 2, {2, 2, 1}},
                    Row{"AfterAPairedReturn", "a\r\nb", 3, {3, 2, 1}},
                    Row{"BetweenReturnAndNewline", "a\r\nb", 2, {2, 1, 3}},
                    Row{"AfterLongCharacters", "\xC3\xA9\xE2\x82\xAC!", 5, {5, 1, 3}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(PlaceInText, IsCountedInLinesAndCharacters) {
    EXPECT_EQ(TextPlace::of(GetParam().text, GetParam().offset), GetParam().place);
}

TEST(JSONParseError, TellsWhyAndWhere) {
    JSONError error;
    const char* const document = "{\n  \"caf\xC3\xA9\": 1,\n  \"\xC3\xA9\" ?\n}";
    EXPECT_EQ(JSON::parse(document, &error).type(), json::Type::null);
    EXPECT_EQ(error.domain, json::ReadingErrorDomain);
    EXPECT_EQ(error.code, json::ErrorUnreadable);
    EXPECT_EQ(error.localizedDescription(), "syntax error at byte 23");
    EXPECT_EQ(error.place, (TextPlace{23, 3, 7}));
}

TEST(JSONParseError, KeepsABrokenDocumentApartFromNull) {
    JSONError error;
    EXPECT_EQ(JSON::parse("null", &error).type(), json::Type::null);
    EXPECT_EQ(error, JSONError());
    EXPECT_EQ(JSON::parse("{\"a\":", &error).type(), json::Type::null);
    EXPECT_EQ(error.code, json::ErrorUnreadable);
    EXPECT_EQ(error.place, (TextPlace{5, 1, 6}));
    const JSONError before = error;
    EXPECT_EQ(JSON::parse("[]", &error).type(), json::Type::array);
    EXPECT_EQ(error, before);
}

}  // namespace
}  // namespace kestrav
