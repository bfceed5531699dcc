#include <gtest/gtest.h>
#include <limits>

#include "json/value/JSONEditor.h"

namespace kestrav {
namespace {

class Lamp : public TreeObject {};

std::string textOf(const JSON& json) {
    return json.rawString(json::TextEncoding::utf8).value_or("none");
}

const char* const kSample = R"({"list":[1,{"deep":true}],"name":"desk"})";

struct Row {
    const char* name;
    const char* json;
    std::vector<JSONKey> path;
    const char* after;  // null pointer: the change can't be made
};

std::string nameOf(const testing::TestParamInfo<Row>& row) {
    return row.param.name;
}

void expectChange(const Row& row, bool (*change)(JSONEditor&)) {
    JSON json = JSON::parse(row.json);
    const JSON copy = json;
    const std::string before = textOf(json);
    JSONEditor place = json.at(row.path);
    EXPECT_EQ(change(place), row.after != nullptr);
    EXPECT_EQ(textOf(json), row.after != nullptr ? row.after : before);
    EXPECT_EQ(textOf(copy), before);
}

class SetAt : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(
    Places, SetAt,
    testing::Values(Row{"Whole", kSample, {}, "5"}, Row{"Element", "[1,2]", {1}, "[1,5]"},
                    Row{"Member", R"({"a":1})", {"a"}, R"({"a":5})"},
                    Row{"NewMember", R"({"a":1})", {"b"}, R"({"a":1,"b":5})"},
                    Row{"Deep", R"([{"a":[0]}])", {0, "a", 0}, R"([{"a":[5]}])"},
                    Row{"IndexBehind", "[1]", {1}, nullptr}, Row{"NegativeIndex", "[1]", {-1}, nullptr},
                    Row{"HugeIndex", "[1]", {std::numeric_limits<std::uint64_t>::max()}, nullptr},
                    Row{"KeyOfList", "[1]", {"a"}, nullptr}, Row{"IndexOfMap", R"({"a":1})", {0}, nullptr},
                    Row{"MissingOnTheWay", R"({"a":1})", {"b", "c"}, nullptr},
                    Row{"WrongKindOnTheWay", R"({"a":1})", {"a", "c"}, nullptr}, Row{"InANumber", "7", {"a"}, nullptr}),
    nameOf);

TEST_P(SetAt, PutsTheValueThereOrSaysThatItCanNot) {
    expectChange(GetParam(), [](JSONEditor& place) { return place.set(5); });
}

class AppendAt : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(Places, AppendAt,
                         testing::Values(Row{"Whole", "[]", {}, "[5]"},
                                         Row{"Deep", R"({"a":[1]})", {"a"}, R"({"a":[1,5]})"},
                                         Row{"Map", "{}", {}, nullptr}, Row{"Null", R"({"a":null})", {"a"}, nullptr},
                                         Row{"Missing", "{}", {"a"}, nullptr}),
                         nameOf);

TEST_P(AppendAt, AddsAtTheEndOfAListAlone) {
    expectChange(GetParam(), [](JSONEditor& place) { return place.append(5); });
}

class InsertAt : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(Places, InsertAt,
                         testing::Values(Row{"Between", "[1,2]", {}, "[1,5,2]"}, Row{"AtTheEnd", "[1]", {}, "[1,5]"},
                                         Row{"Deep", R"({"a":[1,2]})", {"a"}, R"({"a":[1,5,2]})"},
                                         Row{"Behind", "[]", {}, nullptr}, Row{"Map", R"({"a":1})", {}, nullptr},
                                         Row{"Missing", "{}", {"a"}, nullptr}),
                         nameOf);

TEST_P(InsertAt, AddsInFrontOfAnElement) {
    expectChange(GetParam(), [](JSONEditor& place) { return place.insert(1, 5); });
}

class RemoveAt : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(Places, RemoveAt,
                         testing::Values(Row{"Element", "[1,2,3]", {1}, "[1,3]"},
                                         Row{"Member", R"({"a":1,"b":2,"c":3})", {"a"}, R"({"b":2,"c":3})"},
                                         Row{"Deep", R"({"a":[1]})", {"a", 0}, R"({"a":[]})"},
                                         Row{"Whole", "[1]", {}, nullptr}, Row{"Missing", "{}", {"a"}, nullptr},
                                         Row{"IndexBehind", "[1]", {1}, nullptr},
                                         Row{"KeyOfList", "[1]", {"a"}, nullptr}),
                         nameOf);

TEST_P(RemoveAt, TakesAwayWhatStandsThere) {
    expectChange(GetParam(), [](JSONEditor& place) { return place.remove(); });
}

TEST_P(RemoveAt, IsTheSameFromTheContainer) {
    if (GetParam().path.empty()) return;
    Row row = GetParam();
    JSON json = JSON::parse(row.json);
    const JSONKey last = row.path.back();
    row.path.pop_back();
    EXPECT_EQ(json.at(row.path).remove(last), row.after != nullptr);
    EXPECT_EQ(textOf(json), row.after != nullptr ? row.after : textOf(JSON::parse(row.json)));
}

TEST(JSONChanges, OfTheValueItself) {
    JSON json = JSON::parse("[2]");
    EXPECT_TRUE(json.append("three"));
    EXPECT_TRUE(json.insert(0, 1));
    EXPECT_FALSE(json.insert(4, 1));
    EXPECT_EQ(textOf(json), R"([1,2,"three"])");
    EXPECT_TRUE(json.remove(1));
    EXPECT_FALSE(json.remove(2));
    EXPECT_FALSE(json.remove("key"));
    EXPECT_EQ(textOf(json), R"([1,"three"])");
    JSON map = JSON::parse(R"({"a":1})");
    EXPECT_FALSE(map.append(1));
    EXPECT_TRUE(map.remove("a"));
    EXPECT_EQ(textOf(map), "{}");
}

TEST(JSONEditor, ReadsWhatStandsThere) {
    JSON json = JSON::parse(kSample);
    EXPECT_TRUE(json.at({"list", 1, "deep"}).value().boolValue());
    EXPECT_EQ(json.at({"list", 2}).value().error()->code, json::ErrorIndexOutOfBounds);
}

TEST(JSONEditor, ThatIsKeptChangesNoCopyMadeMeanwhile) {
    JSON json = JSON::parse("[[1]]");
    JSONEditor place = json.at({0});
    EXPECT_TRUE(place.append(2));
    const JSON copy = json;
    EXPECT_TRUE(place.append(3));
    EXPECT_EQ(textOf(copy), "[[1,2]]");
    EXPECT_EQ(textOf(json), "[[1,2,3]]");
}

TEST(JSONEditor, TakesTheValueIntoItself) {
    JSON json = JSON::parse("[1]");
    EXPECT_TRUE(json.append(json));
    EXPECT_TRUE(json.at({1}).append(json));
    EXPECT_EQ(textOf(json), "[1,[1,[1,[1]]]]");
}

TEST(JSONEditor, StoresNullForAnObjectThatJSONHasNoFormFor) {
    JSON json = JSON::parse("[]");
    EXPECT_TRUE(json.append(JSON(Tree(std::make_shared<const Lamp>()))));
    EXPECT_TRUE(json.insert(0, JSON::parse("{}")["missing"]));
    EXPECT_TRUE(json.at({0}).set(JSON(Tree(std::make_shared<const Lamp>()))));
    EXPECT_EQ(textOf(json), "[null,null]");
}

TEST(JSONEditor, OfTheWholeClearsTheError) {
    JSON json = JSON::parse("{}")["missing"];
    EXPECT_TRUE(json.at({}).set(1));
    EXPECT_FALSE(json.error().has_value());
}

}  // namespace
}  // namespace kestrav
