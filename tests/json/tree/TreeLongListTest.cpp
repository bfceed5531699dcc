// Lists that are long enough for a changed copy to rest on the list that it was made from.

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "json/tree/Tree.h"

namespace kestrav {
namespace {

constexpr std::size_t kLength = 200;
const std::string kLong = "a text that is too long to lie in the value itself, number ";

Tree elementOf(int number) {
    if (number % 3 == 0) return Tree(number);
    if (number % 3 == 1) return Tree(kLong + std::to_string(number));
    Tree map = Tree::map();
    map.setMember("number", Tree(kLong + std::to_string(number)));
    return map;
}

Tree listOf(const std::vector<int>& numbers) {
    Tree list = Tree::list();
    for (const int number : numbers)
        list.append(elementOf(number));
    return list;
}

std::vector<int> upTo(std::size_t count) {
    std::vector<int> numbers(count);
    for (std::size_t at = 0; at < count; ++at)
        numbers[at] = static_cast<int>(at);
    return numbers;
}

TEST(LongList, IsChangedInACopyAlone) {
    const Tree original = listOf(upTo(kLength));
    Tree copy = original;
    copy.setElement(100, Tree("changed"));
    copy.mutableElement(101)->setMember("number", Tree(1));
    EXPECT_EQ(original, listOf(upTo(kLength)));
    EXPECT_EQ(copy.element(100).text(), "changed");
    EXPECT_EQ(copy.element(101).member("number")->number()->integer(), 1);
    EXPECT_EQ(copy.element(102), original.element(102));
}

TEST(LongList, OutlivesTheOneThatItWasMadeFrom) {
    Tree original = listOf(upTo(kLength));
    Tree copy = original;
    copy.setElement(7, Tree(kLong));
    original = Tree();
    auto wanted = upTo(kLength);
    EXPECT_EQ(copy.element(8), elementOf(8));
    copy.setElement(7, elementOf(7));
    EXPECT_EQ(copy, listOf(wanted));
    copy.removeElement(0);
    wanted.erase(wanted.begin());
    EXPECT_EQ(copy, listOf(wanted));
}

TEST(LongList, MayBeChangedAtEveryPlaceOfACopy) {
    const Tree original = listOf(upTo(kLength));
    Tree copy = original;
    for (std::size_t at = 0; at < kLength; ++at)
        copy.setElement(at, elementOf(static_cast<int>(at) + 1));
    for (std::size_t at = 0; at < kLength; ++at)
        EXPECT_EQ(copy.element(at), elementOf(static_cast<int>(at) + 1));
    EXPECT_EQ(original, listOf(upTo(kLength)));
}

TEST(LongList, LetsGoOfAnObjectOnceNobodyElseHasTheOldList) {
    class Lamp : public TreeObject {};
    auto lamp = std::make_shared<const Lamp>();
    const std::weak_ptr<const Lamp> seen = lamp;
    Tree original = listOf(upTo(kLength));
    original.append(Tree(std::move(lamp)));
    Tree copy = original;
    copy.setElement(kLength, Tree());
    EXPECT_FALSE(seen.expired());
    original = Tree();
    EXPECT_FALSE(seen.expired());
    copy.setElement(0, Tree(1));  // the change finds that the old list is its own
    EXPECT_TRUE(seen.expired());
}

TEST(LongList, OfAListThatRestsOnAnotherIsCopiedAndLent) {
    const Tree original = listOf(upTo(kLength));
    Tree second = original;
    second.setElement(1, Tree("second"));
    Tree third = second;
    third.setElement(2, Tree("third"));
    *third.mutableElement(5)->mutableMember("number") = Tree("lent");
    Tree fourth = third;
    *third.mutableElement(5)->mutableMember("number") = Tree("lent again");
    EXPECT_EQ(second.element(2), original.element(2));
    EXPECT_EQ(third.element(1).text(), "second");
    EXPECT_EQ(fourth.element(2).text(), "third");
    EXPECT_EQ(fourth.element(5).member("number")->text(), "lent");
    EXPECT_EQ(third.element(5).member("number")->text(), "lent again");
    EXPECT_EQ(original, listOf(upTo(kLength)));
}

/// A list and what should be in it.
struct Twin {
    Tree list = listOf(upTo(kLength));
    std::vector<int> numbers = upTo(kLength);
};

void changeSomething(std::vector<Twin>& twins, std::mt19937& engine) {
    Twin& twin = twins[engine() % twins.size()];
    const int number = static_cast<int>(engine() % 1000);
    const std::size_t at = engine() % twin.numbers.size();
    const auto place = twin.numbers.begin() + static_cast<std::ptrdiff_t>(at);
    switch (engine() % 8) {
        case 0:
            twin.list.append(elementOf(number));
            twin.numbers.push_back(number);
            return;
        case 1:
            twin.list.insert(at, elementOf(number));
            twin.numbers.insert(place, number);
            return;
        case 2:
            if (twin.numbers.size() < kLength / 2) return;
            twin.list.removeElement(at);
            twin.numbers.erase(place);
            return;
        case 3:
        case 4:
            twin = Twin(twins[engine() % twins.size()]);
            return;
        case 5:
            *twin.list.mutableElement(at) = elementOf(number);
            *place = number;
            return;
        default:
            twin.list.setElement(at, elementOf(number));
            *place = number;
    }
}

TEST(LongList, IsLikeAVectorThatIsCopiedWhole) {
    std::mt19937 engine(4310);
    std::vector<Twin> twins(5);
    for (int step = 0; step < 20'000; ++step) {
        changeSomething(twins, engine);
        if (step % 100 != 0) continue;
        for (const Twin& twin : twins)
            ASSERT_EQ(twin.list, listOf(twin.numbers)) << "step " << step;
    }
}

TEST(LongList, MayBeCopiedAndChangedOnSeveralThreadsAtOnce) {
    Tree shared = listOf(upTo(kLength));
    std::vector<std::thread> threads;
    std::vector<Tree> results(4);
    for (std::size_t thread = 0; thread < results.size(); ++thread) {
        threads.emplace_back([copy = shared, &result = results[thread], thread]() mutable {
            for (int round = 0; round < 50; ++round) {
                Tree mine = copy;
                mine.setElement(thread, Tree(round));
                mine.mutableElement(101)->setMember("number", Tree(thread));
                result = mine;
                if (round == 25) copy = mine;
            }
        });
    }
    shared = Tree();
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t thread = 0; thread < results.size(); ++thread) {
        auto wanted = listOf(upTo(kLength));
        wanted.setElement(thread, Tree(49));
        wanted.mutableElement(101)->setMember("number", Tree(thread));
        EXPECT_EQ(results[thread], wanted);
    }
}

}  // namespace
}  // namespace kestrav
