#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "json/tree/dataWithJSONObject.h"
#include "json/tree/readJSON.h"

namespace kestrav {
namespace {

const std::string kLong = "a text that is too long to lie in the value itself";
class Lamp : public TreeObject {};

Tree listWith(Tree element) {
    Tree list = Tree::list();
    list.append(std::move(element));
    return list;
}

Tree mapWith(std::string_view key) {
    Tree map = Tree::map();
    map.setMember(key, Tree());
    return map;
}

struct ValidityRow {
    const char* name;
    Tree tree;
    bool valid;
};

class IsValidJSONObject : public testing::TestWithParam<ValidityRow> {};
INSTANTIATE_TEST_SUITE_P(
    Trees, IsValidJSONObject,
    testing::Values(ValidityRow{"EmptyList", Tree::list(), true}, ValidityRow{"EmptyMap", Tree::map(), true},
                    ValidityRow{"TopText", Tree("x"), false}, ValidityRow{"TopNumber", Tree(1), false},
                    ValidityRow{"TopBoolean", Tree(true), false}, ValidityRow{"TopNull", Tree(), false},
                    ValidityRow{"TopObject", Tree(std::make_shared<const Lamp>()), false},
                    ValidityRow{"Null", listWith(Tree()), true}, ValidityRow{"Boolean", listWith(Tree(false)), true},
                    ValidityRow{"Number", listWith(Tree(1.5)), true}, ValidityRow{"Text", listWith(Tree("x")), true},
                    ValidityRow{"Decimal", listWith(Tree(Decimal{5, -1, false, false})), true},
                    ValidityRow{"Infinity", listWith(Tree(std::numeric_limits<double>::infinity())), false},
                    ValidityRow{"NaN", listWith(Tree(std::nan(""))), false},
                    ValidityRow{"DecimalNaN", listWith(Tree(Decimal{.notANumber = true})), false},
                    ValidityRow{"Object", listWith(Tree(std::make_shared<const Lamp>())), false},
                    ValidityRow{"DeepObject", listWith(listWith(Tree(std::make_shared<const Lamp>()))), false},
                    ValidityRow{"BadShortText", listWith(Tree("\xFF")), false},
                    ValidityRow{"BadEndOfShortText", listWith(Tree("fifteen bytes \xC3")), false},
                    ValidityRow{"BadLongText", listWith(Tree(kLong + "\xE2\x82")), false},
                    ValidityRow{"BadMiddleOfLongText", listWith(Tree(kLong + "\xC0\xAF" + kLong)), false},
                    ValidityRow{"GoodKey", mapWith("caf\xC3\xA9"), true}, ValidityRow{"BadKey", mapWith("\x80"), false},
                    ValidityRow{"BadLongKey", mapWith(kLong + "\xED\xA0\x80"), false}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(IsValidJSONObject, JudgesByFormAndContent) {
    EXPECT_EQ(isValidJSONObject(GetParam().tree), GetParam().valid);
}

TEST_P(IsValidJSONObject, AgreesWithTheWriter) {
    if (GetParam().valid) {
        EXPECT_NO_THROW(dataWithJSONObject(GetParam().tree));
    } else {
        EXPECT_THROW(dataWithJSONObject(GetParam().tree), InvalidJSONObject);
    }
}

struct TextRow {
    std::string text;
    std::string json;
};

class WriterText : public testing::TestWithParam<TextRow> {};
INSTANTIATE_TEST_SUITE_P(
    Texts, WriterText,
    testing::Values(TextRow{"", R"([""])"}, TextRow{"plain", R"(["plain"])"}, TextRow{"\"", R"(["\""])"},
                    TextRow{"a\\b", R"(["a\\b"])"}, TextRow{"\b\f\n\r\t", R"(["\b\f\n\r\t"])"},
                    TextRow{std::string("\0\x01\x1F", 3), R"(["\u0000\u0001\u001f"])"}, TextRow{"\x7F/", "[\"\x7F/\"]"},
                    TextRow{"caf\xC3\xA9", "[\"caf\xC3\xA9\"]"}, TextRow{"fifteen bytes..", R"(["fifteen bytes.."])"},
                    TextRow{"sixteen bytes...", R"(["sixteen bytes..."])"},
                    TextRow{"fifteen bytes.\"", R"(["fifteen bytes.\""])"},
                    TextRow{kLong + "\n\xE2\x82\xAC\"" + kLong, "[\"" + kLong + "\\n\xE2\x82\xAC\\\"" + kLong + "\"]"}),
    [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(WriterText, IsQuotedAndEscaped) {
    EXPECT_EQ(dataWithJSONObject(listWith(Tree(GetParam().text))), GetParam().json);
}

TEST(WriterText, OfAnyLengthWithAnyByteInAnyPlaceIsReadBack) {
    for (std::size_t length = 1; length <= 40; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            for (const char byte : {'"', '\\', '\n', '\0', '\x1F', ' ', '\x7F'}) {
                std::string text(length, 'x');
                text[place] = byte;
                const auto result = readJSON(dataWithJSONObject(listWith(Tree(text))));
                ASSERT_TRUE(std::holds_alternative<Tree>(result));
                ASSERT_EQ(std::get<Tree>(result).element(0).text(), text);
            }
        }
    }
}

TEST(WriterText, MayConsistOfEscapesAlone) {
    const std::string text(100'000, '\x01');
    const std::string json = dataWithJSONObject(listWith(Tree(text)));
    EXPECT_EQ(json.size(), 4 + 6 * text.size());
    EXPECT_EQ(std::get<Tree>(readJSON(json)).element(0).text(), text);
}

TEST(Writer, WritesCompactly) {
    Tree map = Tree::map();
    map.setMember("list", Tree::list({Tree(1), Tree(-2.5), Tree(true), Tree(false), Tree()}));
    map.setMember("map", Tree::map());
    map.setMember("empty", Tree::list());
    EXPECT_EQ(dataWithJSONObject(map), R"({"list":[1,-2.5,true,false,null],"map":{},"empty":[]})");
}

TEST(Writer, WritesPrettily) {
    Tree map = Tree::map();
    map.setMember("list", Tree::list({Tree(1), Tree::list({Tree("x")})}));
    map.setMember("empty", Tree::list());
    map.setMember("map", mapWith("key"));
    EXPECT_EQ(dataWithJSONObject(map, WritingOptions::prettyPrinted),
              "{\n  \"list\": [\n    1,\n    [\n      \"x\"\n    ]\n  ],\n  \"empty\": [],\n"
              "  \"map\": {\n    \"key\": null\n  }\n}");
    EXPECT_EQ(dataWithJSONObject(Tree::list(), WritingOptions::prettyPrinted), "[]");
    EXPECT_EQ(static_cast<unsigned>(WritingOptions::prettyPrinted), 1U);
}

TEST(Writer, WritesLongDocuments) {
    Tree list = Tree::list();
    for (int at = 0; at < 300'000; ++at)
        list.append(Tree("number " + std::to_string(at)));
    for (int at = 0; at < 3; ++at) {
        list.append(Tree(std::string(3'000'000, 'z')));
        list.append(Tree("behind it"));
    }
    const auto result = readJSON(dataWithJSONObject(list));
    ASSERT_TRUE(std::holds_alternative<Tree>(result));
    EXPECT_TRUE(std::get<Tree>(result) == list);
}

TEST(Writer, WritesAMillionLevels) {
    constexpr std::size_t kLevels = 1'000'000;
    Tree tree = Tree::list();
    for (std::size_t level = 1; level < kLevels; ++level)
        tree = listWith(std::move(tree));
    EXPECT_TRUE(isValidJSONObject(tree));
    EXPECT_EQ(dataWithJSONObject(tree), std::string(kLevels, '[') + std::string(kLevels, ']'));
}

TEST(Writer, IndentsNoDeeperThan64Levels) {
    Tree tree = Tree::list();
    for (int level = 1; level < 1000; ++level)
        tree = listWith(std::move(tree));
    const std::string json = dataWithJSONObject(tree, WritingOptions::prettyPrinted);
    EXPECT_NE(json.find("\n" + std::string(128, ' ') + "["), std::string::npos);
    EXPECT_EQ(json.find(std::string(129, ' ')), std::string::npos);
    EXPECT_TRUE(std::holds_alternative<ReadError>(readJSON(json)));  // too deep to be read, but written
}

}  // namespace
}  // namespace kestrav
