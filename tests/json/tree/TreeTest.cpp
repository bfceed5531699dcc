#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "json/tree/Tree.h"

namespace kestrav {
namespace {

const std::string kLong = "a text that is too long to lie in the value itself";

TEST(Tree, IsNullAtFirst) {
    EXPECT_TRUE(Tree().isNull());
    EXPECT_EQ(Tree().size(), 0U);
    EXPECT_EQ(Tree().member("x"), nullptr);
}

TEST(Tree, HoldsTextsOfEveryShortLengthAndBeyond) {
    for (std::size_t length = 0; length <= kLong.size(); ++length) {
        const std::string text = kLong.substr(0, length);
        const Tree copy = [tree = Tree(text)] { return tree; }();
        EXPECT_EQ(copy.text(), text);
        EXPECT_EQ(copy.kind(), Tree::Kind::text);
    }
}

TEST(Tree, KeepsZeroBytesInTexts) {
    const std::string text("a\0b", 3);
    EXPECT_EQ(Tree(text).text(), text);
    EXPECT_FALSE(Tree(text) == Tree("a"));
    EXPECT_FALSE(Tree(std::string("a\0", 2)) == Tree("a"));
}

TEST(Tree, TellsNumbersAndBooleansApart) {
    EXPECT_EQ(Tree(true).kind(), Tree::Kind::boolean);
    EXPECT_EQ(Tree(1).kind(), Tree::Kind::number);
    EXPECT_FALSE(Tree(true) == Tree(1));
    EXPECT_EQ(Tree(-5).number()->integer(), -5);
    EXPECT_EQ(Tree(~std::uint64_t{0}).number()->unsignedInteger(), ~std::uint64_t{0});
    EXPECT_EQ(Tree(0.5).number()->floating(), 0.5);
    EXPECT_EQ(Tree(Decimal{125, -1, false, false}).number()->kind(), Number::Kind::decimal);
}

TEST(Tree, AnswersNothingForAnotherKind) {
    const Tree text("x");
    EXPECT_FALSE(text.number().has_value());
    EXPECT_FALSE(text.boolean().has_value());
    EXPECT_EQ(text.object(), nullptr);
    EXPECT_FALSE(Tree(1).text().has_value());
}

TEST(TreeList, KeepsItsOrder) {
    Tree list = Tree::list({Tree("a"), Tree(kLong)});
    for (int at = 0; at < 100; ++at)
        list.append(Tree(at));
    ASSERT_EQ(list.size(), 102U);
    EXPECT_EQ(list.element(1).text(), kLong);
    EXPECT_EQ(list.element(101).number()->integer(), 99);
}

TEST(TreeList, CanTakeACopyOfItself) {
    Tree list = Tree::list({Tree(1)});
    list.append(list);
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list.element(1).size(), 1U);
}

TEST(TreeList, TakesElementsInAnywhereAndLosesThem) {
    Tree list = Tree::list({Tree("b")});
    list.insert(0, Tree(kLong));
    list.insert(2, Tree("c"));
    list.insert(1, Tree("a"));
    const Tree before = list;
    EXPECT_EQ(list, Tree::list({Tree(kLong), Tree("a"), Tree("b"), Tree("c")}));
    list.removeElement(0);
    list.removeElement(2);
    list.removeElement(0);
    EXPECT_EQ(list, Tree::list({Tree("b")}));
    list.removeElement(0);
    EXPECT_EQ(list, Tree::list());
    EXPECT_EQ(before.size(), 4U);
}

TEST(TreeList, IsNotCopiedToInsertOrRemove) {
    Tree list = Tree::list(std::vector<Tree>(100, Tree(kLong)));
    list.append(Tree(1));  // room for more from here on
    const Tree* place = &list.element(0);
    list.removeElement(100);
    list.insert(50, Tree(2));
    list.removeElement(99);
    EXPECT_EQ(&list.element(0), place);
}

Tree nested() {
    Tree inner = Tree::map();
    inner.setMember("list", Tree::list({Tree(1), Tree(2)}));
    Tree outer = Tree::map();
    outer.setMember("inner", inner);
    return outer;
}

TEST(TreeCopy, IsNotChangedWithItsOriginal) {
    Tree original = nested();
    const Tree copy = original;
    original.mutableMember("inner")->mutableMember("list")->setElement(0, Tree("changed"));
    EXPECT_EQ(original.member("inner")->member("list")->element(0).text(), "changed");
    EXPECT_EQ(copy, nested());
}

TEST(TreeCopy, LeavesAPartThatWasTakenOutAlone) {
    Tree original = nested();
    const Tree part = *original.member("inner");
    original.mutableMember("inner")->setMember("more", Tree(3));
    EXPECT_EQ(part.size(), 1U);
    EXPECT_EQ(original.member("inner")->size(), 2U);
}

TEST(TreeCopy, MayBeChangedOnSeveralThreadsAtOnce) {
    Tree shared = nested();
    for (int at = 0; at < 50; ++at)
        shared.setMember(kLong + std::to_string(at), Tree(kLong));
    std::vector<std::thread> threads;
    std::vector<Tree> results(4);
    for (std::size_t thread = 0; thread < results.size(); ++thread) {
        threads.emplace_back([copy = shared, &result = results[thread], thread]() mutable {
            for (int round = 0; round < 200; ++round) {
                Tree mine = copy;
                mine.mutableMember("inner")->mutableMember("list")->append(Tree(thread));
                mine.setMember("own", Tree(round));
                result = mine;
            }
        });
    }
    shared.setMember("late", Tree(true));
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(*shared.member("inner"), *nested().member("inner"));
    for (std::size_t thread = 0; thread < results.size(); ++thread) {
        const Tree& list = *results[thread].member("inner")->member("list");
        ASSERT_EQ(list.size(), 3U);
        EXPECT_EQ(list.element(2).number()->unsignedInteger(), thread);
        EXPECT_EQ(results[thread].member("late"), nullptr);
    }
}

TEST(TreeDepth, OfAMillionIsReleasedComparedAndCopied) {
    const auto deep = [](int levels) {
        Tree tree("bottom");
        for (int level = 0; level < levels; ++level) {
            Tree above = level % 2 == 0 ? Tree::list() : Tree::map();
            if (above.isList())
                above.append(std::move(tree));
            else
                above.setMember("below", std::move(tree));
            tree = std::move(above);
        }
        return tree;
    };
    Tree one = deep(1'000'000);
    Tree copy = one;
    one = Tree();
    copy.swap(one);
    EXPECT_TRUE(one == deep(1'000'000));
    EXPECT_FALSE(one == deep(999'998));
}

TEST(TreeEquality, LooksAtContentAndNotAtMapOrder) {
    Tree left = Tree::map();
    left.setMember("a", Tree(1));
    left.setMember("b", Tree::list({Tree(kLong)}));
    Tree right = Tree::map();
    right.setMember("b", Tree::list({Tree(kLong)}));
    right.setMember("a", Tree(1.0));
    EXPECT_EQ(left, right);
    right.setMember("a", Tree(2));
    EXPECT_FALSE(left == right);
    EXPECT_FALSE(Tree::list() == Tree::map());
    EXPECT_FALSE(Tree::list({Tree(1), Tree(2)}) == Tree::list({Tree(2), Tree(1)}));
    EXPECT_FALSE(Tree::list({Tree(1)}) == Tree::list({Tree(1), Tree(2)}));
}

TEST(TreeEquality, LooksForMembersThatOnlyTheOtherMapHas) {
    Tree fewer = Tree::map();
    fewer.setMember("a", Tree(1));
    Tree more = fewer;
    more.setMember("b", Tree(2));
    EXPECT_FALSE(fewer == more);
    EXPECT_FALSE(more == fewer);
    EXPECT_FALSE(Tree::map() == fewer);
    EXPECT_FALSE(fewer == Tree::map());
}

class Lamp : public TreeObject {};

TEST(TreeEquality, OfObjectsIsIdentity) {
    const auto lamp = std::make_shared<const Lamp>();
    EXPECT_EQ(Tree(lamp), Tree(lamp));
    EXPECT_FALSE(Tree(lamp) == Tree(std::make_shared<const Lamp>()));
    EXPECT_EQ(Tree(lamp).object(), lamp);
    EXPECT_EQ(Tree(lamp).kind(), Tree::Kind::object);
}

TEST(TreeObjects, AreReleasedWithTheLastTreeThatHoldsThem) {
    auto lamp = std::make_shared<const Lamp>();
    const std::weak_ptr<const Lamp> seen = lamp;
    {
        Tree list = Tree::list({Tree(std::move(lamp))});
        Tree copy = list;
        list = Tree();
        EXPECT_FALSE(seen.expired());
    }
    EXPECT_TRUE(seen.expired());
}

TEST(TreeDeathTest, StopsTheProcessAtElementsThatAreNotThere) {
    Tree null;
    Tree list = Tree::list({Tree(1)});
    Tree map = Tree::map();
    EXPECT_DEATH(list.element(1), "");
    EXPECT_DEATH(Tree("x").element(0), "");
    EXPECT_DEATH(null.append(Tree(1)), "");
    EXPECT_DEATH(list.setMember("x", Tree(1)), "");
    EXPECT_DEATH(map.valueAt(0), "");
    EXPECT_DEATH(map.setElement(0, Tree()), "");
    EXPECT_DEATH(list.insert(2, Tree()), "");
    EXPECT_DEATH(map.insert(0, Tree()), "");
    EXPECT_DEATH(list.removeElement(1), "");
    EXPECT_DEATH(list.removeMember("x"), "");
}

}  // namespace
}  // namespace kestrav
