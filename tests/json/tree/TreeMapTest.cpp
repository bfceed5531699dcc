#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "json/tree/Tree.h"

namespace kestrav {
namespace {

const std::string kLong = "a text that is too long to lie in the value itself";

Tree mapOf(std::size_t members) {
    Tree map = Tree::map();
    for (std::size_t at = 0; at < members; ++at)
        map.setMember("key" + std::to_string(at), Tree(at));
    return map;
}

TEST(TreeMap, KeepsTheOrderOfArrival) {
    const Tree map = mapOf(100);
    ASSERT_EQ(map.size(), 100U);
    for (std::size_t at = 0; at < 100; ++at)
        EXPECT_EQ(map.keyAt(at), "key" + std::to_string(at));
}

class TreeMapOfSize : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Sizes, TreeMapOfSize, testing::Values(0, 1, 4, 15, 16, 17, 31, 32, 33, 1000));

TEST_P(TreeMapOfSize, FindsEachOfItsKeysAndNoOther) {
    const Tree map = mapOf(GetParam());
    for (std::size_t at = 0; at < GetParam(); ++at) {
        const Tree* found = map.member("key" + std::to_string(at));
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(found->number()->unsignedInteger(), at);
    }
    EXPECT_EQ(map.member("key"), nullptr);
    EXPECT_EQ(map.member("key" + std::to_string(GetParam())), nullptr);
    EXPECT_EQ(map.member(kLong), nullptr);
}

TEST_P(TreeMapOfSize, ReplacesAMemberWhereItStands) {
    Tree map = mapOf(GetParam());
    for (std::size_t at = 0; at < GetParam(); ++at)
        map.setMember("key" + std::to_string(at), Tree("new"));
    EXPECT_EQ(map.size(), GetParam());
    for (std::size_t at = 0; at < GetParam(); ++at)
        EXPECT_EQ(map.valueAt(at).text(), "new");
}

TEST_P(TreeMapOfSize, LosesItsMembersAndKeepsTheOthersInOrder) {
    Tree map = mapOf(GetParam());
    const Tree before = map;
    std::vector<std::size_t> left(GetParam());
    for (std::size_t at = 0; at < GetParam(); ++at)
        left[at] = at;
    map.removeMember("none of these");
    for (std::size_t step = 0; !left.empty(); ++step) {
        const auto gone = left.begin() + static_cast<std::ptrdiff_t>(step * 7 % left.size());
        map.removeMember("key" + std::to_string(*gone));
        EXPECT_EQ(map.member("key" + std::to_string(*gone)), nullptr);
        left.erase(gone);
        ASSERT_EQ(map.size(), left.size());
        for (std::size_t at = 0; at < left.size(); ++at) {
            const std::string key = "key" + std::to_string(left[at]);
            ASSERT_EQ(map.keyAt(at), key);
            ASSERT_EQ(map.member(key), &map.valueAt(at));
        }
    }
    map.setMember("again", Tree(kLong));
    EXPECT_EQ(map.member("again")->text(), kLong);
    EXPECT_EQ(before, mapOf(GetParam()));
}

TEST(TreeMap, EndsItsSearchAfterManyMembersHaveComeAndGone) {
    Tree map = mapOf(40);
    for (int round = 0; round < 1000; ++round) {
        map.setMember("passing" + std::to_string(round), Tree(round));
        map.removeMember("passing" + std::to_string(round));
    }
    EXPECT_EQ(map.member("none of these"), nullptr);
    EXPECT_EQ(map, mapOf(40));
}

TEST(TreeMap, IsNotOneOfAsManyMembersWithOtherNames) {
    Tree other = mapOf(2);
    other.removeMember("key1");
    other.setMember("another", *mapOf(2).member("key1"));
    EXPECT_FALSE(mapOf(2) == other);
}

TEST(TreeMap, LosesAMemberByAKeyFromItself) {
    Tree map = mapOf(40);
    map.setMember(kLong, Tree(1));
    map.removeMember(map.keyAt(40));
    EXPECT_EQ(map.member(kLong), nullptr);
    EXPECT_EQ(map, mapOf(40));
}

TEST(TreeMap, FindsLongKeysAmongManyAndFew) {
    for (const int members : {3, 100}) {
        Tree map = Tree::map();
        for (int at = 0; at < members; ++at)
            map.setMember(kLong + std::to_string(at), Tree(at));
        EXPECT_EQ(map.member(kLong + "2")->number()->integer(), 2);
        EXPECT_EQ(map.member(kLong), nullptr);
    }
}

TEST(TreeMap, TakesAKeyFromItself) {
    Tree map = Tree::map();
    map.setMember(kLong, Tree(1));
    for (int at = 0; at < 40; ++at) {
        map.setMember(map.keyAt(0), Tree(at));
        map.setMember("more" + std::to_string(at), Tree());
    }
    EXPECT_EQ(map.size(), 41U);
    EXPECT_EQ(map.valueAt(0).number()->integer(), 39);
}

}  // namespace
}  // namespace kestrav
