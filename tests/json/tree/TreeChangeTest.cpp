#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "json/tree/Tree.h"
#include "json/tree/readJSON.h"

namespace kestrav {
namespace {

const std::string kLong = "a text that is too long to lie in the value itself";

Tree treeOf(std::string_view json) {
    return std::get<Tree>(readJSON(json));
}

Tree numbersTo(std::size_t count) {
    Tree list = Tree::list();
    for (std::size_t at = 0; at < count; ++at)
        list.append(Tree(at));
    return list;
}

TEST(TreeRemoveElement, ClosesTheGap) {
    Tree list = treeOf(R"(["a", "b", "a text that is too long to lie in the value itself", "d"])");
    list.removeElement(1);
    EXPECT_EQ(list, Tree::list({Tree("a"), Tree(kLong), Tree("d")}));
    list.removeElement(2);
    list.removeElement(0);
    list.removeElement(0);
    EXPECT_EQ(list, Tree::list());
    list.append(Tree(1));
    EXPECT_EQ(list.size(), 1U);
}

TEST(TreeRemoveElement, LeavesCopiesAlone) {
    const Tree original = treeOf(R"([[1], [2], [3]])");
    Tree copy = original;
    copy.removeElement(0);
    EXPECT_EQ(original.size(), 3U);
    EXPECT_EQ(copy, treeOf("[[2], [3]]"));
}

TEST(TreeInsert, MakesRoomAtThePlace) {
    Tree list = Tree::list();
    list.insert(0, Tree("b"));
    list.insert(0, Tree(kLong));
    list.insert(2, Tree("d"));
    list.insert(2, Tree("c"));
    list.insert(1, Tree("a"));
    EXPECT_EQ(list, Tree::list({Tree(kLong), Tree("a"), Tree("b"), Tree("c"), Tree("d")}));
}

TEST(TreeInsert, TakesAnElementOfTheSameList) {
    Tree list = numbersTo(4);
    for (int at = 0; at < 20; ++at)
        list.insert(0, list.element(list.size() - 1));
    EXPECT_EQ(list.size(), 24U);
    EXPECT_EQ(list.element(0), Tree(3));
}

class TreeRemoveMemberOfSize : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(Sizes, TreeRemoveMemberOfSize, testing::Values(1, 2, 16, 17, 33, 200));

TEST_P(TreeRemoveMemberOfSize, RemovesAMemberAndKeepsTheOthersInOrder) {
    const std::size_t size = GetParam();
    for (std::size_t gone = 0; gone < size; ++gone) {
        Tree map = Tree::map();
        for (std::size_t at = 0; at < size; ++at)
            map.setMember("key" + std::to_string(at), Tree(at));
        map.removeMember("key" + std::to_string(gone));
        map.removeMember("key" + std::to_string(gone));
        ASSERT_EQ(map.size(), size - 1);
        for (std::size_t at = 0; at < size; ++at) {
            const Tree* found = map.member("key" + std::to_string(at));
            ASSERT_EQ(found == nullptr, at == gone);
            if (found == nullptr) continue;
            EXPECT_EQ(*found, Tree(at));
            EXPECT_EQ(found, &map.valueAt(at < gone ? at : at - 1));
        }
    }
}

TEST(TreeRemoveMember, TakesAKeyFromTheMapItself) {
    Tree map = treeOf(R"({"a": 1, "b": 2})");
    map.removeMember(map.keyAt(0));
    EXPECT_EQ(map, treeOf(R"({"b": 2})"));
}

TEST(TreeMutableElement, IsNotSharedWithALaterCopy) {
    Tree list = treeOf(R"([[1], [2]])");
    Tree* element = list.mutableElement(0);
    const Tree copy = list;
    *element = Tree("changed");
    EXPECT_EQ(copy, treeOf("[[1], [2]]"));
    EXPECT_EQ(list.element(0), Tree("changed"));
}

TEST(TreeMutableMember, IsNotSharedWithALaterCopyHoweverDeep) {
    Tree tree = treeOf(R"({"a": {"b": [1, {"c": 2}]}, "d": [3]})");
    const Tree before = treeOf(R"({"a": {"b": [1, {"c": 2}]}, "d": [3]})");
    Tree* deep = tree.mutableMember("a")->mutableMember("b")->mutableElement(1)->mutableMember("c");
    const Tree copy = tree;
    const Tree part = *tree.member("a");
    *deep = Tree("changed");
    EXPECT_EQ(copy, before);
    EXPECT_EQ(part, *before.member("a"));
    EXPECT_EQ(tree, treeOf(R"({"a": {"b": [1, {"c": "changed"}]}, "d": [3]})"));
}

TEST(TreeMutableElement, OfAMillionLevelsIsCopiedAndReleased) {
    Tree tree = Tree::list({Tree("bottom")});
    for (int level = 0; level < 1'000'000; ++level)
        tree = Tree::list({std::move(tree)});
    Tree* below = &tree;
    for (int level = 0; level < 1'000'000; ++level)
        below = below->mutableElement(0);
    const Tree copy = tree;
    below->append(Tree("more"));
    const Tree* bottom = &copy;
    for (int level = 0; level < 1'000'000; ++level)
        bottom = &bottom->element(0);
    EXPECT_EQ(bottom->size(), 1U);
}

TEST(TreeMutableElement, CostsCopiesNothingOnceTheListIsChangedOtherwise) {
    Tree list = treeOf(R"([[1], [2]])");
    *list.mutableElement(0) = Tree(5);
    list.setElement(1, Tree(6));
    const Tree copy = list;
    EXPECT_EQ(&copy.element(0), &list.element(0)) << "the copy should share the list's node";
}

/// A part of a document outlives the rest of it, and the rest a part, on whatever thread.
TEST(TreeOfADocument, IsFreedPieceByPiece) {
    std::string json = "[";
    for (int at = 0; at < 5000; ++at)
        json += (at > 0 ? ",{\"key\":\"" : "{\"key\":\"") + kLong + std::to_string(at) + "\",\"list\":[1,[2],[3]]}";
    Tree whole = treeOf(json + "]");
    std::vector<Tree> parts;
    for (std::size_t at = 0; at < whole.size(); at += 37)
        parts.push_back(whole.element(at));
    whole = Tree();
    for (std::size_t at = 0; at < parts.size(); ++at) {
        EXPECT_EQ(parts[at].member("key")->text(), kLong + std::to_string(37 * at));
        EXPECT_EQ(*parts[at].member("list"), treeOf("[1,[2],[3]]"));
        parts[at] = Tree();
    }
}

TEST(TreeChangeDeathTest, StopsTheProcessAtElementsThatAreNotThere) {
    Tree list = Tree::list({Tree(1)});
    Tree map = Tree::map();
    Tree null;
    EXPECT_DEATH(list.removeElement(1), "");
    EXPECT_DEATH(list.insert(2, Tree()), "");
    EXPECT_DEATH(map.removeElement(0), "");
    EXPECT_DEATH(null.insert(0, Tree()), "");
}

}  // namespace
}  // namespace kestrav
