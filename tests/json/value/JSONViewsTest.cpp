#include <algorithm>
#include <gtest/gtest.h>
#include <limits>

#include "json/value/JSON.h"

namespace kestrav {
namespace {

using json::Type;
using json::URL;

class Lamp : public TreeObject {};

/// One value of each kind.
struct Kinds {
    JSON number = JSON(2.5);
    JSON string = JSON("text");
    JSON boolean = JSON(true);
    JSON array = JSON(Tree::list({Tree(1), Tree("a")}));
    JSON dictionary = JSON::parse(R"({"k":1,"l":[2]})");
    JSON null;
    JSON unknown = JSON(Tree(std::make_shared<const Lamp>()));

    std::vector<JSON> all() const { return {number, string, boolean, array, dictionary, null, unknown}; }
    std::vector<JSON> allBut(std::initializer_list<Type> types) const {
        std::vector<JSON> rest = all();
        std::erase_if(rest, [&](const JSON& json) { return std::ranges::find(types, json.type()) != types.end(); });
        return rest;
    }
};

TEST(JSONBool, IsThereForBooleansAlone) {
    EXPECT_EQ(Kinds().boolean.boolean(), true);
    EXPECT_EQ(JSON(false).boolean(), false);
    for (const JSON& json : Kinds().allBut({Type::bool_}))
        EXPECT_FALSE(json.boolean().has_value());
}

TEST(JSONBool, IsSetOrNull) {
    JSON json("x");
    json.setBool(true);
    EXPECT_EQ(json.type(), Type::bool_);
    EXPECT_TRUE(json.rawBool());
    json.setBool(std::nullopt);
    EXPECT_EQ(json.type(), Type::null);
}

struct TruthRow {
    JSON json;
    bool value;
};

class JSONBoolValue : public testing::TestWithParam<TruthRow> {};
INSTANTIATE_TEST_SUITE_P(Values, JSONBoolValue,
                         testing::Values(TruthRow{true, true}, TruthRow{false, false}, TruthRow{1, true},
                                         TruthRow{0, false}, TruthRow{-0.5, true}, TruthRow{0.0, false},
                                         TruthRow{"true", true}, TruthRow{"TRUE", true}, TruthRow{"tRuE", true},
                                         TruthRow{"y", true}, TruthRow{"Y", true}, TruthRow{"t", true},
                                         TruthRow{"T", true}, TruthRow{"yes", false}, TruthRow{"1", false},
                                         TruthRow{"", false}, TruthRow{"truer", false}, TruthRow{" t", false},
                                         TruthRow{"false", false}, TruthRow{Tree::list({Tree(true)}), false},
                                         TruthRow{Tree::map(), false}, TruthRow{Tree(), false},
                                         TruthRow{Tree(std::make_shared<const Lamp>()), false}),
                         [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(JSONBoolValue, DefaultsToFalse) {
    EXPECT_EQ(GetParam().json.boolValue(), GetParam().value);
}

TEST(JSONString, IsThereForTextsAlone) {
    EXPECT_EQ(Kinds().string.string(), "text");
    const JSON string = Kinds().string;
    EXPECT_EQ(string.text(), "text");
    for (const JSON& json : Kinds().allBut({Type::string})) {
        EXPECT_FALSE(json.string().has_value());
        EXPECT_FALSE(json.text().has_value());
    }
}

TEST(JSONString, IsSetOrNull) {
    JSON json;
    json.setString("new");
    EXPECT_EQ(json.rawString(), "new");
    EXPECT_EQ(json.type(), Type::string);
    json.setString(std::nullopt);
    EXPECT_EQ(json.type(), Type::null);
}

TEST(JSONStringValue, DefaultsToTheEmptyText) {
    const Kinds kinds;
    EXPECT_EQ(kinds.string.stringValue(), "text");
    EXPECT_EQ(kinds.number.stringValue(), "2.5");
    EXPECT_EQ(kinds.boolean.stringValue(), "true");
    EXPECT_EQ(JSON(false).stringValue(), "false");
    for (const JSON& json : kinds.allBut({Type::string, Type::number, Type::bool_}))
        EXPECT_EQ(json.stringValue(), "");
}

TEST(JSONArray, GivesEachElementAsAValue) {
    const auto elements = Kinds().array.array();
    ASSERT_TRUE(elements.has_value());
    ASSERT_EQ(elements->size(), 2U);
    EXPECT_EQ((*elements)[0].type(), Type::number);
    EXPECT_EQ((*elements)[1].stringValue(), "a");
    EXPECT_EQ(Kinds().array.arrayValue().size(), 2U);
    EXPECT_TRUE(Kinds().array.arrayObject() == Kinds().array.object());
}

TEST(JSONArray, IsThereForListsAlone) {
    for (const JSON& json : Kinds().allBut({Type::array})) {
        EXPECT_FALSE(json.array().has_value());
        EXPECT_FALSE(json.arrayObject().has_value());
        EXPECT_TRUE(json.arrayValue().empty());
    }
}

TEST(JSONArray, IsSetOrNull) {
    JSON json;
    json.setArrayObject(Tree::list({Tree(1)}));
    EXPECT_EQ(json.type(), Type::array);
    json.setArrayObject(std::nullopt);
    EXPECT_EQ(json.type(), Type::null);
}

TEST(JSONDictionary, GivesEachMemberAsAValue) {
    const auto members = Kinds().dictionary.dictionary();
    ASSERT_TRUE(members.has_value());
    ASSERT_EQ(members->size(), 2U);
    EXPECT_EQ(members->at("k").valueAs<int>(), 1);
    EXPECT_EQ(members->at("l").type(), Type::array);
    EXPECT_EQ(Kinds().dictionary.dictionaryValue().size(), 2U);
    EXPECT_TRUE(Kinds().dictionary.dictionaryObject() == Kinds().dictionary.object());
}

TEST(JSONDictionary, IsThereForMapsAlone) {
    for (const JSON& json : Kinds().allBut({Type::dictionary})) {
        EXPECT_FALSE(json.dictionary().has_value());
        EXPECT_FALSE(json.dictionaryObject().has_value());
        EXPECT_TRUE(json.dictionaryValue().empty());
    }
}

TEST(JSONDictionary, IsSetOrNull) {
    JSON json;
    json.setDictionaryObject(Tree::map());
    EXPECT_EQ(json.type(), Type::dictionary);
    json.setDictionaryObject(std::nullopt);
    EXPECT_EQ(json.type(), Type::null);
}

TEST(JSONNumber, IsThereForNumbersAndBooleans) {
    const Kinds kinds;
    EXPECT_EQ(kinds.number.number()->floating(), 2.5);
    EXPECT_EQ(kinds.boolean.number()->kind(), Number::Kind::integer);
    EXPECT_EQ(kinds.boolean.number()->integer(), 1);
    EXPECT_EQ(JSON(false).number()->integer(), 0);
    for (const JSON& json : kinds.allBut({Type::number, Type::bool_})) {
        EXPECT_FALSE(json.number().has_value());
        EXPECT_FALSE(json.numberAs<int>().has_value());
        EXPECT_FALSE(json.numberAs<double>().has_value());
    }
}

TEST(JSONNumber, IsSetOrNull) {
    JSON json;
    json.setNumber(Number(5));
    EXPECT_EQ(json.rawNumber().integer(), 5);
    json.setNumber(Number(true));
    EXPECT_EQ(json.type(), Type::bool_);
    json.setNumber(std::nullopt);
    EXPECT_EQ(json.type(), Type::null);
}

struct NumberRow {
    const char* name;
    JSON json;
    Number value;
};

class JSONNumberValue : public testing::TestWithParam<NumberRow> {};
INSTANTIATE_TEST_SUITE_P(Values, JSONNumberValue,
                         testing::Values(NumberRow{"Number", JSON(7U), Number(7U)},
                                         NumberRow{"True", JSON(true), Number(1)},
                                         NumberRow{"False", JSON(false), Number(0)},
                                         NumberRow{"Decimal", JSON("12.5"), Number(Decimal{125, -1, false, false})},
                                         NumberRow{"NoDecimal", JSON("abc"), Number(Decimal{})},
                                         NumberRow{"EmptyText", JSON(""), Number(Decimal{})},
                                         NumberRow{"List", JSON(Tree::list({Tree(1)})), Number(0.0)},
                                         NumberRow{"Map", JSON(Tree::map()), Number(0.0)},
                                         NumberRow{"Null", JSON(), Number(0.0)},
                                         NumberRow{"Unknown", JSON(Tree(std::make_shared<const Lamp>())), Number(0.0)}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(JSONNumberValue, DefaultsToZeroOfTheFittingKind) {
    const Number number = GetParam().json.numberValue();
    EXPECT_TRUE(number == GetParam().value);
    EXPECT_EQ(number.kind(), GetParam().value.kind());
}

template <class Native>
class JSONNativeNumber : public testing::Test {};
using Natives = testing::Types<double, float, std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t,
                               std::uint32_t, std::int64_t, std::uint64_t, long long, unsigned long long>;
TYPED_TEST_SUITE(JSONNativeNumber, Natives);

TYPED_TEST(JSONNativeNumber, IsStoredAndReadBack) {
    constexpr TypeParam kLowest = std::numeric_limits<TypeParam>::lowest();
    constexpr TypeParam kHighest = std::numeric_limits<TypeParam>::max();
    for (const TypeParam value : {kLowest, kHighest, TypeParam{1}, TypeParam{0}}) {
        JSON json("before");
        json.setNumberAs<TypeParam>(value);
        EXPECT_EQ(json.type(), Type::number);
        EXPECT_EQ(json.numberAs<TypeParam>(), value);
        EXPECT_EQ(json.valueAs<TypeParam>(), value);
    }
}

TYPED_TEST(JSONNativeNumber, IsNullWhenSetToNothing) {
    JSON json(5);
    json.setNumberAs<TypeParam>(std::nullopt);
    EXPECT_EQ(json.type(), Type::null);
}

TYPED_TEST(JSONNativeNumber, ComesFromEveryKindByDefault) {
    EXPECT_EQ(JSON("42.9").valueAs<TypeParam>(), static_cast<TypeParam>(42.9));
    EXPECT_EQ(JSON(true).valueAs<TypeParam>(), TypeParam{1});
    EXPECT_EQ(JSON(true).numberAs<TypeParam>(), TypeParam{1});
    EXPECT_EQ(JSON("abc").valueAs<TypeParam>(), TypeParam{0});
    EXPECT_EQ(JSON(Tree::list()).valueAs<TypeParam>(), TypeParam{0});
    EXPECT_FALSE(JSON("42").numberAs<TypeParam>().has_value());
}

TEST(JSONNativeNumbers, AreTruncatedToTheirWidth) {
    EXPECT_EQ(JSON(300).valueAs<std::int8_t>(), 44);
    EXPECT_EQ(JSON("300").valueAs<std::int8_t>(), 44);
    EXPECT_EQ(JSON(-1).valueAs<std::uint16_t>(), 65535);
    EXPECT_EQ(JSON(-1).valueAs<std::uint64_t>(), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(JSON(1e300).valueAs<std::int64_t>(), std::numeric_limits<std::int64_t>::max());
}

struct UrlRow {
    const char* text;
    const char* url;
};

class JSONUrl : public testing::TestWithParam<UrlRow> {};
INSTANTIATE_TEST_SUITE_P(Texts, JSONUrl,
                         testing::Values(UrlRow{"https://example.org/a?b=c", "https://example.org/a?b=c"},
                                         UrlRow{"https://example.org/a b", "https://example.org/a%20b"},
                                         UrlRow{"https://example.org/caf\xC3\xA9", "https://example.org/caf%C3%A9"},
                                         UrlRow{"https://example.org/100%25", "https://example.org/100%2525"},
                                         UrlRow{"https://example.org/#top", "https://example.org/%23top"},
                                         UrlRow{"a\"<>[]\\^`{|}b", "a%22%3C%3E%5B%5D%5C%5E%60%7B%7C%7Db"},
                                         UrlRow{"-._~!$&'()*+,;=:@/?", nullptr},
                                         UrlRow{"/-._~!$&'()*+,;=:@?", "/-._~!$&'()*+,;=:@?"},
                                         UrlRow{"relative/path", "relative/path"}, UrlRow{"", nullptr},
                                         UrlRow{":", nullptr}, UrlRow{"1a:b", nullptr}, UrlRow{"http://a:b/", nullptr},
                                         UrlRow{"http://a:80/", "http://a:80/"}, UrlRow{"\xFF", nullptr}),
                         [](const auto& row) { return "Row" + std::to_string(row.index); });

TEST_P(JSONUrl, IsTheEncodedTextIfThatIsOne) {
    const auto url = JSON(GetParam().text).url();
    ASSERT_EQ(url.has_value(), GetParam().url != nullptr);
    EXPECT_EQ(url.value_or(*URL::parse("none")).absoluteString(), GetParam().url != nullptr ? GetParam().url : "none");
}

TEST(JSONUrl, IsThereForTextsAlone) {
    for (const JSON& json : Kinds().allBut({Type::string}))
        EXPECT_FALSE(json.url().has_value());
}

TEST(JSONUrl, IsSetAsItsTextOrNull) {
    JSON json;
    json.setURL(URL::parse("https://example.org/a%20b"));
    EXPECT_EQ(json.rawString(), "https://example.org/a%20b");
    json.setURL(std::nullopt);
    EXPECT_EQ(json.type(), Type::null);
}

}  // namespace
}  // namespace kestrav
