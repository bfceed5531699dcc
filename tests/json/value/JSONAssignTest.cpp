#include <gtest/gtest.h>
#include <thread>

#include "json/value/JSON.h"

namespace kestrav {
namespace {

class Lamp : public TreeObject {};

JSON unknown() {
    return JSON(Tree(std::make_shared<const Lamp>()));
}

std::string afterAssigning(std::string_view json, std::initializer_list<JSONKey> path, const JSON& value) {
    JSON changed = JSON::parse(json);
    changed.assign(path, value);
    return *changed.rawString(json::TextEncoding::utf8);
}

TEST(JSONAssign, ReplacesAndAddsMembers) {
    EXPECT_EQ(afterAssigning(R"({"a":1})", {"a"}, 2), R"({"a":2})");
    EXPECT_EQ(afterAssigning(R"({"a":1})", {"b"}, "x"), R"({"a":1,"b":"x"})");
    EXPECT_EQ(afterAssigning("[1,2]", {1}, true), "[1,true]");
    EXPECT_EQ(afterAssigning(R"({"a":{"b":[0,{"c":1}]}})", {"a", "b", 1, "c"}, JSON()),
              R"({"a":{"b":[0,{"c":null}]}})");
}

TEST(JSONAssign, ChangesNothingWithoutAPath) {
    EXPECT_EQ(afterAssigning("[1]", {}, 2), "[1]");
}

TEST(JSONAssign, ChangesNothingWhereTheKeyDoesNotSuit) {
    EXPECT_EQ(afterAssigning("[1]", {1}, 2), "[1]");
    EXPECT_EQ(afterAssigning("[1]", {-1}, 2), "[1]");
    EXPECT_EQ(afterAssigning("[1]", {"a"}, 2), "[1]");
    EXPECT_EQ(afterAssigning(R"({"a":1})", {0}, 2), R"({"a":1})");
    EXPECT_EQ(afterAssigning(R"({"a":1})", {"a", "b"}, 2), R"({"a":1})");
    EXPECT_EQ(afterAssigning("5", {"a"}, 2), "5");
}

TEST(JSONAssign, StoresTheNullThatAMissingStepIs) {
    EXPECT_EQ(afterAssigning(R"({"a":1})", {"b", "c"}, 2), R"({"a":1,"b":null})");
    EXPECT_EQ(afterAssigning("[1]", {5, "c"}, 2), "[1]");
}

TEST(JSONAssign, StoresTheObjectOfAValueThatHasNone) {
    EXPECT_EQ(afterAssigning(R"({"a":1})", {"a"}, JSON::parse("{}")["missing"]), R"({"a":null})");
    EXPECT_EQ(afterAssigning(R"({"a":1})", {"a"}, unknown()), R"({"a":null})");
}

TEST(JSONAssign, MakesNullOfAnUnknownObjectOnTheWay) {
    Tree map = Tree::map();
    map.setMember("lamp", Tree(std::make_shared<const Lamp>()));
    JSON json(map);
    json.assign({"lamp", "colour"}, "red");
    EXPECT_EQ(json.rawString(json::TextEncoding::utf8), R"({"lamp":null})");
}

TEST(JSONAssign, OfAValueIntoItselfKeepsWhatItWas) {
    JSON json = JSON::parse(R"({"a":[1]})");
    json.assign({"a", 0}, json);
    EXPECT_EQ(json.rawString(json::TextEncoding::utf8), R"({"a":[{"a":[1]}]})");
}

const char* const kSample = R"({"list":[10,[20],{"deep":true}]})";

TEST(JSONCopies, MayBeChangedOnSeveralThreads) {
    const JSON shared = JSON::parse(kSample);
    std::vector<std::string> written(4);
    std::vector<std::thread> threads;
    for (std::size_t thread = 0; thread < written.size(); ++thread) {
        threads.emplace_back([copy = shared, thread, &text = written[thread]]() mutable {
            for (int round = 0; round < 100; ++round)
                copy.assign({"list", 2, "deep"}, thread);
            text = *copy["list"].rawString(json::TextEncoding::utf8);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (std::size_t thread = 0; thread < written.size(); ++thread) {
        EXPECT_EQ(written[thread], "[10,[20],{\"deep\":" + std::to_string(thread) + "}]");
    }
    EXPECT_TRUE(shared == JSON::parse(kSample));
}

}  // namespace
}  // namespace kestrav
