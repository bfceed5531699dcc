#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "json/value/JSON.h"

namespace kestrav {
namespace {

using namespace json;

class Lamp : public TreeObject {};

JSON unknown() {
    return JSON(Tree(std::make_shared<const Lamp>()));
}

JSON sample() {
    return JSON::parse(R"({"name":"desk","list":[10,[20],{"deep":true}],"none":null})");
}

std::int64_t codeOf(const JSON& json) {
    const auto error = json.error();
    return error ? error->code : 0;
}

std::string messageOf(const JSON& json) {
    const auto error = json.error();
    return error ? error->localizedDescription() : "";
}

TEST(Type, HasItsRawValues) {
    EXPECT_EQ(rawValue(Type::number), 0);
    EXPECT_EQ(rawValue(Type::string), 1);
    EXPECT_EQ(rawValue(Type::bool_), 2);
    EXPECT_EQ(rawValue(Type::array), 3);
    EXPECT_EQ(rawValue(Type::dictionary), 4);
    EXPECT_EQ(rawValue(Type::null), 5);
    EXPECT_EQ(rawValue(Type::unknown), 6);
}

TEST(Type, IsMadeFromItsRawValuesAndNoOthers) {
    for (std::int64_t raw = 0; raw <= 6; ++raw)
        EXPECT_EQ(rawValue(typeOfRawValue(raw).value()), raw);
    for (const std::int64_t raw : {std::int64_t{-1}, std::int64_t{7}, std::int64_t{256}, INT64_MIN, INT64_MAX}) {
        EXPECT_FALSE(typeOfRawValue(raw).has_value()) << raw;
    }
}

struct KindRow {
    const char* name;
    Tree object;
    Type type;
};

class JSONKind : public testing::TestWithParam<KindRow> {};
INSTANTIATE_TEST_SUITE_P(Objects, JSONKind,
                         testing::Values(KindRow{"Boolean", Tree(true), Type::bool_},
                                         KindRow{"BooleanNumber", Tree(Number(false)), Type::bool_},
                                         KindRow{"One", Tree(1), Type::number},
                                         KindRow{"Double", Tree(0.5), Type::number},
                                         KindRow{"Text", Tree("x"), Type::string}, KindRow{"Null", Tree(), Type::null},
                                         KindRow{"List", Tree::list(), Type::array},
                                         KindRow{"Map", Tree::map(), Type::dictionary}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(JSONKind, IsDecidedByTheObject) {
    const JSON made(GetParam().object);
    EXPECT_EQ(made.type(), GetParam().type);
    EXPECT_FALSE(made.error().has_value());
    EXPECT_TRUE(made.exists());
    EXPECT_TRUE(made.object() == GetParam().object);
    JSON set("before");
    set.setObject(GetParam().object);
    EXPECT_EQ(set.type(), GetParam().type);
    EXPECT_TRUE(set.object() == GetParam().object);
}

TEST(JSON, IsNullAtFirst) {
    const JSON json;
    EXPECT_EQ(json.type(), Type::null);
    EXPECT_FALSE(json.error().has_value());
    EXPECT_TRUE(json.object().isNull());
    EXPECT_TRUE(json.rawNull().isNull());
}

TEST(JSON, IsNullOfANullPointer) {
    const JSON json = nullptr;
    EXPECT_EQ(json.type(), Type::null);
    EXPECT_FALSE(json.error().has_value());
    const char* none = nullptr;
    EXPECT_EQ(JSON(none).type(), Type::null);
    EXPECT_TRUE(JSON::parse("null") == nullptr);
}

TEST(JSON, OfAnUnsupportedObjectIsUnknownButExists) {
    const JSON json = unknown();
    EXPECT_EQ(json.type(), Type::unknown);
    EXPECT_EQ(codeOf(json), 999);
    EXPECT_EQ(messageOf(json), "It is a unsupported type");
    EXPECT_EQ(json.error()->domain, "JSONErrorDomain");
    EXPECT_TRUE(json.exists());
    EXPECT_TRUE(json.object().isNull());
}

TEST(JSON, LosesItsErrorWhenItIsSetAnew) {
    JSON json = unknown();
    json.setObject(Tree(1));
    EXPECT_FALSE(json.error().has_value());
    json.setObject(Tree(std::make_shared<const Lamp>()));
    EXPECT_EQ(codeOf(json), 999);
    JSON missing = sample()["missing"];
    missing.setObject(Tree());
    EXPECT_FALSE(missing.error().has_value());
}

TEST(JSON, KeepsWhatTheOtherFieldsLastHeld) {
    JSON json(Tree::list({Tree(1), Tree(2)}));
    json.setObject(Tree("text"));
    json.setObject(Tree(5));
    json.setObject(Tree(true));
    Tree map = Tree::map();
    map.setMember("k", Tree(1));
    json.setObject(map);
    json.setObject(Tree());
    EXPECT_EQ(json.rawArray().size(), 2U);
    EXPECT_EQ(json.rawString(), "text");
    EXPECT_EQ(json.rawNumber().integer(), 5);
    EXPECT_TRUE(json.rawBool());
    EXPECT_EQ(json.rawDictionary().size(), 1U);
    EXPECT_TRUE(json.object().isNull());
}

TEST(JSON, KeepsTheOtherFieldsBesideAnError) {
    JSON json("text");
    json.setObject(Tree(5));
    json.setObject(Tree(std::make_shared<const Lamp>()));
    EXPECT_EQ(codeOf(json), 999);
    EXPECT_EQ(json.rawString(), "text");
    EXPECT_EQ(json.rawNumber().integer(), 5);
}

TEST(JSON, StartsWithEmptyFields) {
    const JSON json;
    EXPECT_TRUE(json.rawArray().isList());
    EXPECT_TRUE(json.rawDictionary().isMap());
    EXPECT_EQ(json.rawString(), "");
    EXPECT_EQ(json.rawNumber().integer(), 0);
    EXPECT_FALSE(json.rawBool());
}

TEST(JSONFromBytes, SetsTheParsedObject) {
    const std::string_view text = "[1]";
    JSONError error{"untouched", 7, {}};
    const JSON json(std::as_bytes(std::span(text)), ReadingOptions::none, &error);
    EXPECT_EQ(json.type(), Type::array);
    EXPECT_EQ(error.domain, "untouched");
}

TEST(JSONErrorOfNobody, DescribesNothing) {
    EXPECT_EQ(JSONError().localizedDescription(), "");
}

TEST(JSONFromBytes, IsNullAndTellsWhyWhenTheyAreNoJSON) {
    const std::string_view text = "[1,]";
    JSONError error;
    const JSON json(std::as_bytes(std::span(text)), ReadingOptions::none, &error);
    EXPECT_EQ(json.type(), Type::null);
    EXPECT_FALSE(json.error().has_value());
    EXPECT_EQ(error.domain, ReadingErrorDomain);
    EXPECT_EQ(error.localizedDescription(), "syntax error at byte 3");
    EXPECT_EQ(JSON(std::as_bytes(std::span(text))).type(), Type::null);
}

TEST(JSONFromBytes, TakesFragmentsUnlessToldOtherwise) {
    const std::string_view text = "42";
    EXPECT_EQ(JSON(std::as_bytes(std::span(text))).type(), Type::number);
    EXPECT_EQ(JSON(std::as_bytes(std::span(text)), ReadingOptions::none).type(), Type::null);
}

TEST(JSONParse, TakesAnyValueAtTheTop) {
    EXPECT_EQ(JSON::parse("42").type(), Type::number);
    EXPECT_EQ(JSON::parse("\"x\"").type(), Type::string);
    EXPECT_EQ(JSON::parse("true").type(), Type::bool_);
    EXPECT_EQ(JSON::parse("null").type(), Type::null);
    EXPECT_EQ(JSON::parse("1").type(), Type::number);
    EXPECT_EQ(JSON::parse("{").type(), Type::null);
    EXPECT_EQ(JSON::parse("[\"\xFF\"]").type(), Type::null);
}

TEST(JSONFromValues, HoldsTheListOfTheirObjects) {
    const JSON json(std::vector<JSON>{JSON(1), JSON("two"), unknown(), JSON()});
    ASSERT_EQ(json.type(), Type::array);
    EXPECT_TRUE(json.object() == Tree::list({Tree(1), Tree("two"), Tree(), Tree()}));
}

TEST(JSONLookup, FindsElementsAndMembers) {
    const JSON json = sample();
    EXPECT_EQ(json["name"].stringValue(), "desk");
    EXPECT_EQ(json["list"][0].valueAs<std::int64_t>(), 10);
    EXPECT_EQ(json["list"][1][0].valueAs<std::int64_t>(), 20);
    EXPECT_TRUE(json["list"][2]["deep"].boolValue());
    EXPECT_TRUE(json["none"].exists());
    EXPECT_FALSE(json["none"].error().has_value());
}

TEST(JSONLookup, TakesKeysOfEveryForm) {
    const JSON json = sample();
    EXPECT_EQ(json[std::string("name")].stringValue(), "desk");
    EXPECT_EQ(json[std::string_view("name")].stringValue(), "desk");
    EXPECT_EQ(json[JSONKey::key("name")].stringValue(), "desk");
    EXPECT_EQ(json["list"][JSONKey::index(0)].valueAs<int>(), 10);
    EXPECT_EQ(json["list"][JSONKey(std::uint64_t{0})].valueAs<int>(), 10);
    EXPECT_EQ(json["list"][2ULL]["deep"].boolValue(), true);
    EXPECT_EQ(json["list"][std::uint8_t{0}].valueAs<int>(), 10);
    EXPECT_EQ(json["list"][std::size_t{0}].valueAs<int>(), 10);
}

TEST(JSONLookup, FollowsAPath) {
    const JSON json = sample();
    EXPECT_TRUE((json[{"list", 2, "deep"}].boolValue()));
    const std::vector<JSONKey> path{"list", 1, 0};
    EXPECT_EQ(json[path].valueAs<int>(), 20);
    EXPECT_TRUE(json[std::vector<JSONKey>()] == json);
}

TEST(JSONLookup, GivesAPartThatIsIndependent) {
    JSON json = sample();
    const JSON part = json["list"];
    json.assign({"list", 0}, 99);
    EXPECT_EQ(part[0].valueAs<int>(), 10);
    EXPECT_EQ(json["list"][0].valueAs<int>(), 99);
}

TEST(JSONLookup, CostsTheSameWhateverLiesBelow) {
    // Copying the list each time would take hours, not the time that a test has.
    JSON json = JSON::parse("{}");
    json.assign({"large"}, Tree::list(std::vector<Tree>(1'000'000, Tree("a text that needs a node of its own"))));
    std::size_t sum = 0;
    for (int round = 0; round < 100'000; ++round)
        sum += json["large"].object().size();
    EXPECT_EQ(sum, 100'000'000'000U);
}

struct FailureRow {
    const char* name;
    JSON from;
    JSONKey key;
    std::int64_t code;
    const char* message;
};

class JSONLookupFailure : public testing::TestWithParam<FailureRow> {};
INSTANTIATE_TEST_SUITE_P(
    Rows, JSONLookupFailure,
    testing::Values(
        FailureRow{"EmptyList", JSON(Tree::list()), 0, 900, "Array[0] is out of bounds"},
        FailureRow{"NegativeIndex", JSON(Tree::list()), -1, 900, "Array[-1] is out of bounds"},
        FailureRow{"NegativeIndexOfSome", sample()["list"], -1, 900, "Array[-1] is out of bounds"},
        FailureRow{"IndexBehind", sample()["list"], 3, 900, "Array[3] is out of bounds"},
        FailureRow{"IndexBeyondAllLists", sample()["list"], std::numeric_limits<std::uint64_t>::max(), 900,
                   "Array[18446744073709551615] is out of bounds"},
        FailureRow{"IndexOfMap", sample(), 0, 901, "Array[0] failure, It is not an array"},
        FailureRow{"IndexOfText", JSON("x"), 2, 901, "Array[2] failure, It is not an array"},
        FailureRow{"IndexOfNull", JSON(), 2, 901, "Array[2] failure, It is not an array"},
        FailureRow{"MissingKey", sample(), "missing", 500, "Dictionary[\"missing\"] does not exist"},
        FailureRow{"MissingKeyVerbatim", sample(), "a\"b%s", 500, "Dictionary[\"a\"b%s\"] does not exist"},
        FailureRow{"KeyOfNumber", JSON(5), "k", 901, "Dictionary[\"k\"] failure, It is not an dictionary"},
        FailureRow{"KeyOfList", sample()["list"], "k", 901, "Dictionary[\"k\"] failure, It is not an dictionary"},
        FailureRow{"KeyOfNull", JSON(), "k", 901, "Dictionary[\"k\"] failure, It is not an dictionary"},
        FailureRow{"KeyOfUnknown", unknown(), "k", 999, "It is a unsupported type"},
        FailureRow{"IndexOfUnknown", unknown(), 0, 999, "It is a unsupported type"},
        FailureRow{"KeyOfMissing", sample()["missing"], "k", 500, "Dictionary[\"missing\"] does not exist"},
        FailureRow{"IndexOfMissing", sample()["missing"], 1, 500, "Dictionary[\"missing\"] does not exist"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(JSONLookupFailure, IsANullThatTellsWhy) {
    const JSON found = GetParam().from[GetParam().key];
    EXPECT_EQ(found.type(), Type::null);
    ASSERT_TRUE(found.error().has_value());
    EXPECT_EQ(found.error()->domain, "JSONErrorDomain");
    EXPECT_EQ(found.error()->code, GetParam().code);
    ASSERT_EQ(found.error()->userInfo.size(), 1U);
    EXPECT_EQ(found.error()->userInfo.at("NSLocalizedDescription"), GetParam().message);
    EXPECT_EQ(found.exists(), GetParam().code == 999);
}

TEST(JSONLookupFailure, OfTheFirstStepIsWhatAChainReports) {
    EXPECT_EQ(messageOf(JSON(5)["a"]["b"][3]), "Dictionary[\"a\"] failure, It is not an dictionary");
    EXPECT_EQ(messageOf(sample()[{"list", 7, "x", "y"}]), "Array[7] is out of bounds");
    EXPECT_EQ(messageOf(sample()[{"name", 0, "x"}]), "Array[0] failure, It is not an array");
    EXPECT_EQ(messageOf(sample()["list"]["a"][0]), "Dictionary[\"a\"] failure, It is not an dictionary");
}

TEST(JSONLookupFailure, GivesDefaultsThroughTheViews) {
    const JSON missing = sample()["missing"];
    EXPECT_FALSE(missing.boolValue());
    EXPECT_EQ(missing.stringValue(), "");
    EXPECT_EQ(missing.valueAs<double>(), 0.0);
    EXPECT_TRUE(missing.arrayValue().empty());
}

TEST(JSONErrors, HaveTheirNamesAndValues) {
    EXPECT_EQ(ErrorUnsupportedType, 999);
    EXPECT_EQ(ErrorIndexOutOfBounds, 900);
    EXPECT_EQ(ErrorWrongType, 901);
    EXPECT_EQ(ErrorNotExist, 500);
    EXPECT_EQ(ErrorInvalidJSON, 490);
}

TEST(JSONKey, IsAnIndexOrAText) {
    EXPECT_EQ(JSONKey(3).index(), 3);
    EXPECT_EQ(JSONKey(0).kind(), JSONKey::Kind::index);
    EXPECT_FALSE(JSONKey(3).key().has_value());
    EXPECT_EQ(JSONKey("k").key(), "k");
    EXPECT_FALSE(JSONKey("k").index().has_value());
    EXPECT_EQ(JSONKey("k").kind(), JSONKey::Kind::key);
    EXPECT_FALSE(JSONKey("3") == JSONKey(3));
    EXPECT_EQ(JSONKey(std::uint64_t{3}).index(), 3);
    EXPECT_TRUE(JSONKey(std::uint64_t{3}) == JSONKey(3));
    EXPECT_EQ(JSONKey(std::numeric_limits<std::uint64_t>::max()).index(), INT64_MAX);
    const char* none = nullptr;
    EXPECT_EQ(JSONKey(none).key(), "");
    static_assert(JSONSubscriptType<int> && JSONSubscriptType<std::string> && JSONSubscriptType<JSONKey>);
    static_assert(!JSONSubscriptType<bool> && !JSONSubscriptType<double>);
}

}  // namespace
}  // namespace kestrav
