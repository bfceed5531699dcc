// Each allocation of each change of a tree is failed in turn: what is raised is std::bad_alloc, the tree is as it was,
// and nothing is lost.

#include <functional>
#include <gtest/gtest.h>
#include <string>

#include "json/tree/Tree.h"
#include "json/tree/dataWithJSONObject.h"
#include "json/tree/readJSON.h"
#include "tests/json/FailingMemory.h"

namespace kestrav {
namespace {

const char* const kLong = "a text that is too long to lie in the value itself";
const char* const kDocument =
    R"({"a": [1, 2.5, "short", "a text that is too long to lie in the value itself", 123456789012345678901234567890],)"
    R"( "b": {"escaped \n key that is longer than sixteen": true, "c": [[], {}, [[null]]]}, "a": [{"d": 1}, {"e": 2}],)"
    R"( "m": {"a":1,"b":2,"c":3,"d":4,"e":5,"f":6,"g":7,"h":8,"i":9,"j":10,"k":11,"l":12,"m":13,"n":14,"o":15,"p":16,)"
    R"("q":17}})";

Tree document() {
    Tree tree = std::get<Tree>(readJSON(kDocument));
    Tree longList = Tree::list();
    for (int at = 0; at < 150; ++at)
        longList.append(at % 2 == 0 ? Tree(kLong) : Tree::list({Tree(at)}));
    tree.setMember("long", std::move(longList));
    return tree;
}

struct Change {
    const char* name;
    std::function<void(Tree&)> make;
};

class TreeOutOfMemory : public testing::TestWithParam<Change> {};
INSTANTIATE_TEST_SUITE_P(
    Changes, TreeOutOfMemory,
    testing::Values(
        Change{"SetMember", [](Tree& tree) { tree.setMember("a", Tree(kLong)); }},
        Change{"SetNewMember", [](Tree& tree) { tree.setMember(kLong, Tree(1)); }},
        Change{"SetMemberBelow", [](Tree& tree) { tree.mutableMember("m")->setMember("a new key", Tree(1)); }},
        Change{"RemoveMember", [](Tree& tree) { tree.removeMember("b"); }},
        Change{"RemoveMemberBelow", [](Tree& tree) { tree.mutableMember("m")->removeMember("c"); }},
        Change{"Append", [](Tree& tree) { tree.mutableMember("a")->append(Tree(kLong)); }},
        Change{"Insert",
               [](Tree& tree) {
                   tree.mutableMember("a")->insert(0, Tree(Decimal{1, 400, false, false}));
               }},
        Change{"SetElement", [](Tree& tree) { tree.mutableMember("a")->setElement(0, Tree(kLong)); }},
        Change{"RemoveElement", [](Tree& tree) { tree.mutableMember("a")->removeElement(0); }},
        Change{"SetElementOfALongList", [](Tree& tree) { tree.mutableMember("long")->setElement(7, Tree(kLong)); }},
        Change{"ChangeBelowALongList",
               [](Tree& tree) { tree.mutableMember("long")->mutableElement(7)->append(Tree(kLong)); }},
        Change{"Assign", [](Tree& tree) { tree = document(); }},
        Change{"AssignALentTree",
               [](Tree& tree) {
                   Tree lent = document();
                   *lent.mutableMember("a")->mutableElement(0)->mutableMember("d") = Tree(2);
                   tree = lent;
               }}),
    [](const auto& row) { return std::string(row.param.name); });

using Later = FailingMemory::Later;

/// The change, on a tree whose nodes another one shares or doesn't; each piece of memory is back at the end.
void changeWithoutMemory(const Change& change, bool shared, Later later) {
    const Tree before = document();
    const long long lived = FailingMemory::living();
    {
        Tree tree = document();
        const Tree other = shared ? tree : Tree();
        const int failures = FailingMemory::failInTurn(
            later, [&] { change.make(tree); }, [&] { EXPECT_TRUE(tree == before) << dataWithJSONObject(tree); });
        // What is shared has to be copied before it is changed.
        if (shared) {
            EXPECT_EQ(other, before);
            EXPECT_GT(failures, 0);
        }
    }
    EXPECT_EQ(FailingMemory::living(), lived);
}

TEST_P(TreeOutOfMemory, LeavesTheTreeAsItWasAndLosesNothing) {
    const std::string textBefore = dataWithJSONObject(document());
    for (const Later later : {Later::succeed, Later::fail}) {
        changeWithoutMemory(GetParam(), false, later);
        changeWithoutMemory(GetParam(), true, later);
    }
    EXPECT_EQ(dataWithJSONObject(document()), textBefore);
}

/// Fails each allocation of what leaves nothing behind; how many there are.
int workWithoutMemory(const std::function<void()>& work) {
    const long long lived = FailingMemory::living();
    const auto nothingLives = [&] { EXPECT_EQ(FailingMemory::living(), lived); };
    const int failures = FailingMemory::failInTurn(Later::succeed, work, nothingLives);
    EXPECT_EQ(FailingMemory::failInTurn(Later::fail, work, nothingLives), failures);
    nothingLives();
    return failures;
}

TEST(ReadingOutOfMemory, LosesNothing) {
    static_cast<void>(document());  // whatever is set up once
    EXPECT_GT(workWithoutMemory([] { static_cast<void>(document()); }), 3);
}

TEST(WritingOutOfMemory, LosesNothing) {
    Tree tree = document();
    tree.setMember("large", Tree(std::string(300'000, '\n')));
    EXPECT_GT(workWithoutMemory([&] { static_cast<void>(dataWithJSONObject(tree)); }), 10);
}

TEST(ComparingOutOfMemory, LosesNothing) {
    const Tree left = document();
    const Tree right = document();
    EXPECT_GT(workWithoutMemory([&] { EXPECT_EQ(left == right, true); }), 0);
}

TEST(NumbersWithoutMemory, AreComparedAndConverted) {
    const Number decimal = Number::decimalNumber("123456789012345678901234567890.5");
    FailingMemory::failAfter(0, Later::fail);
    const bool isLess = std::is_lt(Number(1.5).compare(decimal));
    const double value = decimal.doubleValue();
    const bool isEqual = Number(0.1) == Number::decimalNumber("0.1");
    EXPECT_FALSE(FailingMemory::stopFailing());
    EXPECT_TRUE(isLess);
    EXPECT_EQ(value, 123456789012345678901234567890.5);
    EXPECT_FALSE(isEqual);
}

TEST(TreeMapMemory, TakesAKeyThatLiesInTheMapAsItMoves) {
    Tree map = std::get<Tree>(readJSON(R"({"first": "a key", "second": "another"})"));
    // The text lies within the map's node, which has no room for one more and is freed.
    map.setMember(*map.member("first")->text(), Tree(1));
    map.setMember(*map.member("second")->text(), Tree(2));
    EXPECT_EQ(map, std::get<Tree>(readJSON(R"({"first": "a key", "second": "another", "a key": 1, "another": 2})")));
    map.removeMember(*map.member("first")->text());
    EXPECT_EQ(map.size(), 3U);
}

}  // namespace
}  // namespace kestrav
