// Each allocation of each change of a tree is failed in turn: what is raised is std::bad_alloc, the tree is as it was,
// and nothing is lost. Freed memory is overwritten, so that whoever reads it still is found out.

#include <cstdlib>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <malloc.h>
#include <new>
#include <string>

#include "json/tree/Tree.h"
#include "json/tree/dataWithJSONObject.h"
#include "json/tree/readJSON.h"

namespace {

long long allowed = -1;  // allocations before the one that fails; negative: none does
long long living = 0;

void* allocated(std::size_t size) {
    if (allowed == 0) throw std::bad_alloc();
    if (allowed > 0) --allowed;
    void* memory = std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    ++living;
    return memory;
}

void released(void* memory) noexcept {
    if (memory == nullptr) return;
    --living;
    std::memset(memory, 0xDD, ::malloc_usable_size(memory));
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
    return allocated(size);
}
void operator delete(void* memory) noexcept {
    released(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    released(memory);
}

namespace kestrav {
namespace {

const char* const kLong = "a text that is too long to lie in the value itself";
const char* const kDocument =
    R"({"a": [1, 2.5, "short", "a text that is too long to lie in the value itself", 123456789012345678901234567890],)"
    R"( "b": {"escaped \n key that is longer than sixteen": true, "c": [[], {}, [[null]]]}, "a": [{"d": 1}, {"e": 2}],)"
    R"( "m": {"a":1,"b":2,"c":3,"d":4,"e":5,"f":6,"g":7,"h":8,"i":9,"j":10,"k":11,"l":12,"m":13,"n":14,"o":15,"p":16,)"
    R"("q":17}})";

Tree document() {
    return std::get<Tree>(readJSON(kDocument));
}

struct Change {
    const char* name;
    std::function<void(Tree&)> make;
};

class TreeOutOfMemory : public testing::TestWithParam<Change> {};
INSTANTIATE_TEST_SUITE_P(
    Changes, TreeOutOfMemory,
    testing::Values(Change{"SetMember", [](Tree& tree) { tree.setMember("a", Tree(kLong)); }},
                    Change{"SetNewMember", [](Tree& tree) { tree.setMember(kLong, Tree(1)); }},
                    Change{"SetMemberBelow",
                           [](Tree& tree) { tree.mutableMember("m")->setMember("a new key", Tree(1)); }},
                    Change{"RemoveMember", [](Tree& tree) { tree.removeMember("b"); }},
                    Change{"RemoveMemberBelow", [](Tree& tree) { tree.mutableMember("m")->removeMember("c"); }},
                    Change{"Append", [](Tree& tree) { tree.mutableMember("a")->append(Tree(kLong)); }},
                    Change{"Insert",
                           [](Tree& tree) {
                               tree.mutableMember("a")->insert(0, Tree(Decimal{1, 400, false, false}));
                           }},
                    Change{"SetElement", [](Tree& tree) { tree.mutableMember("a")->setElement(0, Tree(kLong)); }},
                    Change{"RemoveElement", [](Tree& tree) { tree.mutableMember("a")->removeElement(0); }},
                    Change{"Assign", [](Tree& tree) { tree = document(); }},
                    Change{"AssignALentTree",
                           [](Tree& tree) {
                               Tree lent = document();
                               *lent.mutableMember("a")->mutableElement(0)->mutableMember("d") = Tree(2);
                               tree = lent;
                           }}),
    [](const auto& row) { return std::string(row.param.name); });

/// Runs `work` until it has all the memory it asks for; how often it had not.
int failInTurn(const std::function<void()>& work, const std::function<void()>& afterFailure) {
    for (int failures = 0;; ++failures) {
        allowed = failures;
        try {
            work();
            allowed = -1;
            return failures;
        } catch (const std::bad_alloc&) {
            allowed = -1;
            afterFailure();
        }
    }
}

TEST_P(TreeOutOfMemory, LeavesTheTreeAsItWasAndLosesNothing) {
    static_cast<void>(document());  // whatever is set up once
    const Tree before = document();
    const std::string textBefore = dataWithJSONObject(before);
    for (const bool shared : {false, true}) {
        const long long lived = living;
        int failures = 0;
        {
            Tree tree = document();
            const Tree other = shared ? tree : Tree();
            failures = failInTurn([&] { GetParam().make(tree); },
                                  [&] { EXPECT_TRUE(tree == before) << dataWithJSONObject(tree); });
            if (shared) {
                EXPECT_EQ(other, before);
            }
        }
        EXPECT_EQ(living, lived);
        // What is shared has to be copied before it is changed.
        if (shared) {
            EXPECT_GT(failures, 0);
        }
    }
    EXPECT_EQ(dataWithJSONObject(before), textBefore);
}

TEST(ReadingOutOfMemory, LosesNothing) {
    static_cast<void>(document());
    const long long lived = living;
    const int failures = failInTurn([] { static_cast<void>(document()); }, [&] { EXPECT_EQ(living, lived); });
    EXPECT_GT(failures, 3);
    EXPECT_EQ(living, lived);
}

TEST(WritingOutOfMemory, LosesNothing) {
    const Tree tree = document();
    const long long lived = living;
    const int failures =
        failInTurn([&] { static_cast<void>(dataWithJSONObject(tree)); }, [&] { EXPECT_EQ(living, lived); });
    EXPECT_GT(failures, 0);
    EXPECT_EQ(living, lived);
}

TEST(ComparingOutOfMemory, LosesNothing) {
    const Tree left = document();
    const Tree right = document();
    const long long lived = living;
    EXPECT_GT(failInTurn([&] { EXPECT_EQ(left == right, true); }, [&] { EXPECT_EQ(living, lived); }), 0);
}

TEST(NumbersWithoutMemory, AreComparedAndConverted) {
    const Number decimal = Number::decimalNumber("123456789012345678901234567890.5");
    allowed = 0;
    const bool isLess = std::is_lt(Number(1.5).compare(decimal));
    const double value = decimal.doubleValue();
    const bool isEqual = Number(0.1) == Number::decimalNumber("0.1");
    allowed = -1;
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
