#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

#include "json/record/JSONRepresentation.h"
#include "json/tree/dataWithJSONObject.h"

namespace kestrav {
namespace {

struct Order {
    std::string command;
    std::vector<std::string> arguments;
    static constexpr auto JSONFields() {
        return std::tuple(JSONField{"command", &Order::command}, JSONField{"arguments", &Order::arguments});
    }
};

struct Empty {
    static constexpr auto JSONFields() { return std::tuple(); }
};

/// Not representable, and no object of a tree either.
struct Plain {
    int number = 0;
};

/// An object that could also represent itself.
class Beacon : public TreeObject {
  public:
    static Tree JSONRepresentation() { return Tree("never asked for"); }
};

/// A text that could also represent itself.
class Label {
  public:
    operator std::string_view() const { return "label"; }  // NOLINT(google-explicit-constructor): as texts do
    static Tree JSONRepresentation() { return Tree("never asked for"); }
};

/// Neither object nor record, but it can represent itself.
class Colour {
  public:
    static Tree JSONRepresentation() { return Tree::list({Tree(255), Tree(0), Tree(0)}); }
};

struct Everything {
    std::map<std::string, int> map{{"one", 1}};
    std::vector<std::vector<int>> lists{{1, 2}, {}};
    std::string text = "text";
    int number = -3;
    std::uint64_t large = ~std::uint64_t{0};
    float floating = 0.5F;
    bool boolean = true;
    std::shared_ptr<const Beacon> beacon = std::make_shared<const Beacon>();
    Order nested{"inner", {}};
    Label label;
    Colour colour;
    Plain plain;
    std::vector<Order> orders{Order{"first", {}}};
    std::vector<bool> flags{true, false};
    Tree tree = Tree::list({Tree(1)});
    std::string nameless = "never sent";
    static constexpr auto JSONFields() {
        using E = Everything;
        return std::tuple(JSONField{"map", &E::map}, JSONField{"lists", &E::lists}, JSONField{"text", &E::text},
                          JSONField{"number", &E::number}, JSONField{"large", &E::large},
                          JSONField{"floating", &E::floating}, JSONField{"boolean", &E::boolean},
                          JSONField{"beacon", &E::beacon}, JSONField{"nested", &E::nested},
                          JSONField{"label", &E::label}, JSONField{"colour", &E::colour}, JSONField{"plain", &E::plain},
                          JSONField{"orders", &E::orders}, JSONField{"flags", &E::flags}, JSONField{"tree", &E::tree},
                          JSONField{"", &E::nameless});
    }
};

std::string written(const char* member) {
    Tree alone = Tree::map();
    const Tree everything = JSONRepresentation(Everything{});
    alone.setMember("it", *everything.member(member));
    return dataWithJSONObject(alone);
}

TEST(JSONSerializable, TurnsAnOrderIntoItsTwoMembers) {
    const Tree map = JSONRepresentation(Order{"dd", {"bs=512"}});
    EXPECT_EQ(map.size(), 2U);
    EXPECT_EQ(map.member("command")->text(), "dd");
    ASSERT_TRUE(map.member("arguments")->isList());
    EXPECT_EQ(map.member("arguments")->element(0).text(), "bs=512");
    EXPECT_EQ(dataWithJSONObject(map), R"({"command":"dd","arguments":["bs=512"]})");
}

TEST(JSONSerializable, GivesAnEmptyMapForNoFields) {
    EXPECT_EQ(dataWithJSONObject(JSONRepresentation(Empty{})), "{}");
}

TEST(JSONSerializable, GivesAnEmptyListForAnEmptyList) {
    EXPECT_EQ(dataWithJSONObject(JSONRepresentation(Order{"", {}})), R"({"command":"","arguments":[]})");
}

struct StoredField {
    const char* name;
    const char* json;
};

class JSONSerializableField : public testing::TestWithParam<StoredField> {};
INSTANTIATE_TEST_SUITE_P(
    Cases, JSONSerializableField,
    testing::Values(StoredField{"map", R"({"it":{"one":1}})"}, StoredField{"lists", R"({"it":[[1,2],[]]})"},
                    StoredField{"text", R"({"it":"text"})"}, StoredField{"number", R"({"it":-3})"},
                    StoredField{"large", R"({"it":18446744073709551615})"}, StoredField{"floating", R"({"it":0.5})"},
                    StoredField{"boolean", R"({"it":true})"}, StoredField{"flags", R"({"it":[true,false]})"},
                    StoredField{"tree", R"({"it":[1]})"}, StoredField{"label", R"({"it":"label"})"},
                    StoredField{"colour", R"({"it":[255,0,0]})"},
                    StoredField{"nested", R"({"it":{"command":"inner","arguments":[]}})"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(JSONSerializableField, IsStoredByItsKind) {
    EXPECT_EQ(written(GetParam().name), GetParam().json);
}

TEST(JSONSerializable, StoresAnInstanceItselfThoughItCouldRepresentItself) {
    const Everything record;
    EXPECT_EQ(JSONRepresentation(record).member("beacon")->object(), record.beacon);
}

TEST(JSONSerializable, DoesNotConvertTheRecordsInAList) {
    const Tree map = JSONRepresentation(Everything{});
    const Tree& element = map.member("orders")->element(0);
    ASSERT_EQ(element.kind(), Tree::Kind::object);
    const auto boxed = std::dynamic_pointer_cast<const record::Boxed<Order>>(element.object());
    ASSERT_NE(boxed, nullptr);
    EXPECT_EQ(boxed->value().command, "first");
    EXPECT_FALSE(isValidJSONObject(map));
}

TEST(JSONSerializable, LeavesOutWhatIsNothingOfATreeAndWhatHasNoName) {
    const Tree map = JSONRepresentation(Everything{});
    EXPECT_EQ(map.member("plain"), nullptr);
    EXPECT_EQ(map.member(""), nullptr);
    EXPECT_EQ(map.size(), 14U);
}

TEST(JSONSerializable, KeepsTheOrderOfTheFields) {
    const Tree map = JSONRepresentation(Everything{});
    EXPECT_EQ(map.keyAt(0), "map");
    EXPECT_EQ(map.keyAt(13), "tree");
}

}  // namespace
}  // namespace kestrav
