#include <gtest/gtest.h>

#include "json/value/JSON.h"
#include "json/value/collate.h"

namespace kestrav {
namespace {

using json::collate;

class Lamp : public TreeObject {};

enum class Relation { equal, less, none };

struct Row {
    const char* name;
    JSON left;
    JSON right;
    Relation relation;
};

const Tree kLamp(std::make_shared<const Lamp>());

class JSONComparison : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(
    Pairs, JSONComparison,
    testing::Values(
        Row{"SameNumbers", JSON(1), JSON(1.0), Relation::equal}, Row{"Numbers", JSON(1), JSON(1.5), Relation::less},
        Row{"LargeNumbers", JSON(INT64_MAX), JSON(9223372036854775808.0), Relation::less},
        Row{"SameTexts", JSON("a"), JSON("a"), Relation::equal}, Row{"Texts", JSON("a"), JSON("b"), Relation::less},
        Row{"TextsOfTwoCases", JSON("a"), JSON("B"), Relation::less},
        Row{"TextsWithAccents", JSON("\xC3\xA9t\xC3\xA9"), JSON("f"), Relation::less},
        Row{"EmptyText", JSON(""), JSON("a"), Relation::less},
        Row{"TextsOfOneMeaning", JSON("e\xCC\x81"), JSON("\xC3\xA9"), Relation::less},
        Row{"SameBooleans", JSON(true), JSON(true), Relation::equal},
        Row{"Booleans", JSON(false), JSON(true), Relation::none},
        Row{"SameLists", JSON::parse("[1,\"x\"]"), JSON::parse("[1.0,\"x\"]"), Relation::equal},
        Row{"Lists", JSON::parse("[1]"), JSON::parse("[2]"), Relation::none},
        Row{"SameMaps", JSON::parse(R"({"a":1,"b":2})"), JSON::parse(R"({"b":2,"a":1})"), Relation::equal},
        Row{"Maps", JSON::parse(R"({"a":1})"), JSON::parse(R"({"a":2})"), Relation::none},
        Row{"Nulls", JSON(), JSON(), Relation::equal}, Row{"NumberAndText", JSON(1), JSON("1"), Relation::none},
        Row{"NumberAndBoolean", JSON(1), JSON(true), Relation::none},
        Row{"NullAndFalse", JSON(), JSON(false), Relation::none},
        Row{"ListAndMap", JSON::parse("[]"), JSON::parse("{}"), Relation::none},
        Row{"UnknownAndItself", JSON(kLamp), JSON(kLamp), Relation::none},
        Row{"UnknownAndNull", JSON(kLamp), JSON(), Relation::none}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(JSONComparison, FollowsTheKinds) {
    const auto& [name, left, right, relation] = GetParam();
    const bool equal = relation == Relation::equal;
    const bool less = relation == Relation::less;
    EXPECT_EQ(left == right, equal);
    EXPECT_EQ(right == left, equal);
    EXPECT_EQ(left != right, !equal);
    EXPECT_EQ(left < right, less);
    EXPECT_EQ(right > left, less);
    EXPECT_EQ(left <= right, less || equal);
    EXPECT_EQ(right >= left, less || equal);
    EXPECT_FALSE(right < left);
    EXPECT_FALSE(left > right);
    EXPECT_EQ(right <= left, equal);
    EXPECT_EQ(left >= right, equal);
}

TEST(JSONComparison, OfNullsDoesNotLookAtTheirErrors) {
    EXPECT_TRUE(JSON::parse("{}")["missing"] == JSON());
}

TEST(Collation, OrdersEqualBytesAloneAsEqual) {
    EXPECT_EQ(collate("x", "x"), std::strong_ordering::equal);
    EXPECT_NE(collate("\xC3\xA9", "e\xCC\x81"), std::strong_ordering::equal);
    EXPECT_NE(collate("a\x01", "a"), std::strong_ordering::equal);
}

TEST(Collation, OrdersAsPeopleDo) {
    EXPECT_EQ(collate("apple", "Banana"), std::strong_ordering::less);
    EXPECT_EQ(collate("Zebra", "\xC3\xA4pfel"), std::strong_ordering::greater);
    EXPECT_EQ(collate("a", "A"), std::strong_ordering::less);
    EXPECT_EQ(collate("r\xC3\xB4le", "roles"), std::strong_ordering::less);
}

}  // namespace
}  // namespace kestrav
