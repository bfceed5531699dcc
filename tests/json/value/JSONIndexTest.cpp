#include <gtest/gtest.h>

#include "json/value/JSON.h"
#include "json/value/JSONIndex.h"

namespace kestrav {
namespace {

using json::Type;

template <class Index>
class Positions : public testing::Test {};
using Indices = testing::Types<JSONIndex, JSONRawIndex>;
TYPED_TEST_SUITE(Positions, Indices);

TYPED_TEST(Positions, AreEqualOnlyInTheSameCaseAndPlace) {
    EXPECT_TRUE(TypeParam::array(1) == TypeParam::array(1));
    EXPECT_FALSE(TypeParam::array(1) == TypeParam::array(2));
    EXPECT_TRUE(TypeParam::dictionary(1) == TypeParam::dictionary(1));
    EXPECT_FALSE(TypeParam::dictionary(1) == TypeParam::dictionary(2));
    EXPECT_FALSE(TypeParam::array(0) == TypeParam::dictionary(0));
    EXPECT_FALSE(TypeParam::array(0) == TypeParam::null());
    EXPECT_FALSE(TypeParam::dictionary(0) == TypeParam::null());
    EXPECT_TRUE(TypeParam::null() == TypeParam::null());
}

TYPED_TEST(Positions, FollowEachOther) {
    EXPECT_TRUE(TypeParam::array(1).next() == TypeParam::array(2));
    EXPECT_TRUE(TypeParam::dictionary(1).next() == TypeParam::dictionary(2));
    EXPECT_TRUE(TypeParam::null().next() == TypeParam::null());
}

TEST(JSONIteration, StartsByKind) {
    EXPECT_TRUE(JSON::parse("[1]").startIndex() == JSONIndex::array(0));
    EXPECT_TRUE(JSON::parse("{}").startIndex() == JSONIndex::dictionary(0));
    EXPECT_TRUE(JSON::parse("5").startIndex() == JSONIndex::null());
    EXPECT_TRUE(JSON::parse("[1]").startRawIndex() == JSONRawIndex::array(0));
    EXPECT_TRUE(JSON::parse("{}").startRawIndex() == JSONRawIndex::dictionary(0));
    EXPECT_TRUE(JSON::parse("\"x\"").startRawIndex() == JSONRawIndex::null());
    EXPECT_TRUE(JSON::parse("[1,2]").endIndex() == JSONIndex::array(2));
    EXPECT_TRUE(JSON::parse("{\"a\":1}").endRawIndex() == JSONRawIndex::dictionary(1));
    EXPECT_TRUE(JSON().endIndex() == JSONIndex::null());
    EXPECT_TRUE(JSON().endRawIndex() == JSONRawIndex::null());
}

std::string walked(const JSON& json) {
    std::string text;
    for (const auto& [key, value] : json)
        text += key.string() + "=" + value.stringValue() + ";";
    return text;
}

TEST(JSONIteration, WalksElementsAndMembersInOrder) {
    EXPECT_EQ(walked(JSON::parse("[5,\"x\",true]")), "0=5;1=x;2=true;");
    EXPECT_EQ(walked(JSON::parse(R"({"b":1,"a":2})")), "b=1;a=2;");
    EXPECT_EQ(walked(JSON::parse("[]")), "");
    EXPECT_EQ(walked(JSON::parse("5")), "");
}

TEST(JSONIteration, NamesMembersByKeyAndElementsByPosition) {
    const JSON map = JSON::parse(R"({"a key of more than fifteen bytes":1})");
    for (const auto& [key, value] : map) {
        EXPECT_TRUE(key == "a key of more than fifteen bytes");
        EXPECT_EQ(key.name(), "a key of more than fifteen bytes");
        EXPECT_EQ(std::string(key), "a key of more than fifteen bytes");
    }
    const JSON list = JSON::parse("[7,8]");
    std::size_t at = 0;
    for (const auto& [key, value] : list) {
        EXPECT_EQ(key.position(), at);
        EXPECT_TRUE(key == std::to_string(at));
        EXPECT_FALSE(key == "");
        ++at;
    }
    EXPECT_EQ(at, 2U);
}

const char* const kNested =
    R"({"text":"a text of more than fifteen bytes","list":[[1],[2]],"decimal":123456789012345678901234567890})";

TEST(JSONIteration, GivesValuesWhoseCopiesOutliveTheWalkedOne) {
    JSON json = JSON::parse(kNested);
    std::vector<JSON> kept;
    std::vector<JSONMember<JSON>> members;
    for (const auto& member : json) {
        kept.push_back(member.value);
        members.push_back(member);
        JSON assigned;
        assigned = member.value;
        kept.push_back(std::move(assigned));
    }
    const JSON before = json;
    json = JSON();
    for (std::size_t at = 0; at < members.size(); ++at) {
        EXPECT_TRUE(kept[2 * at] == kept[2 * at + 1]);
        EXPECT_TRUE(kept[2 * at] == members[at].value);
    }
    kept[2].assign({0, 0}, 5);
    EXPECT_TRUE(kept[2] == JSON::parse("[[5],[2]]"));
    EXPECT_TRUE(before == JSON::parse(kNested));
}

TEST(JSONIteration, GivesValuesThatAreLikeThoseOfALookup) {
    class Lamp : public TreeObject {};
    Tree list = Tree::list({Tree(1), Tree("two"), Tree::list({Tree(3)}), Tree(std::make_shared<const Lamp>())});
    const JSON json(list);
    std::size_t at = 0;
    for (const auto& [key, value] : json) {
        const JSON wanted = json[at++];
        EXPECT_EQ(value.type(), wanted.type());
        EXPECT_EQ(value.error(), wanted.error());
        EXPECT_EQ(value.exists(), wanted.exists());
        EXPECT_EQ(value.rawString(), wanted.rawString());
        EXPECT_EQ(value["x"].error(), wanted["x"].error());
        EXPECT_EQ(value == wanted, value.type() != Type::unknown);
    }
    EXPECT_EQ(at, 4U);
}

TEST(JSONIteration, OfAMemberWalksOn) {
    const JSON json = JSON::parse(kNested);
    int sum = 0;
    for (const auto& [name, list] : json)
        for (const auto& [position, inner] : list)
            for (const auto& [last, number] : inner)
                sum += number.valueAs<int>();
    EXPECT_EQ(sum, 3);
}

TEST(JSONIteration, GivesObjectsAtRawPositions) {
    const JSON json = JSON::parse("[5,\"x\"]");
    EXPECT_TRUE(json[JSONRawIndex::array(1)].second == Tree("x"));
    EXPECT_EQ(json[JSONIndex::array(1)].first, "1");
    EXPECT_TRUE(JSON(5)[JSONRawIndex::null()].second.isNull());
    EXPECT_EQ(JSON(5)[JSONIndex::null()].second.type(), Type::null);
    JSON::Iterator place = json.begin();
    EXPECT_TRUE((place++).index() == JSONIndex::array(0));
    EXPECT_TRUE(place.index() == JSONIndex::array(1));
}

TEST(JSONIterationDeathTest, StopsTheProcessAtAForeignPosition) {
    EXPECT_DEATH(static_cast<void>(JSON::parse("[1]")[JSONIndex::dictionary(0)]), "");
    EXPECT_DEATH(static_cast<void>(JSON::parse("[1]")[JSONIndex::array(1)]), "");
    EXPECT_DEATH(static_cast<void>(JSON::parse("[1]")[JSONIndex::null()]), "");
    EXPECT_DEATH(static_cast<void>(JSON::parse("{}")[JSONIndex::dictionary(0)]), "");
}

}  // namespace
}  // namespace kestrav
