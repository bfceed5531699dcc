// Each allocation of each operation is failed in turn: what is raised is std::bad_alloc, the value is as it was, and
// nothing is lost.

#include <gtest/gtest.h>
#include <memory>
#include <string>

#include "json/value/JSONEditor.h"
#include "tests/json/FailingMemory.h"

namespace kestrav {
namespace {

class Lamp : public TreeObject {};

const char* const kLong = "a text that is too long to lie in the value itself";

/// Has been a text and a number before, and shares all that it holds with `other`.
struct Values {
    JSON json;
    JSON other;

    Values() {
        json.setString(kLong);
        json.setNumberAs<int>(7);
        json.setObject(
            JSON::parse(R"({"list":[1,[2],{"deep":"a text that is too long to lie in a value"}],"name":"desk"})")
                .object());
        other = json;
    }
};

bool same(const JSON& left, const JSON& right) {
    return left == right && left.rawString() == right.rawString() && left.rawNumber() == right.rawNumber() &&
           left.error() == right.error();
}

struct Row {
    const char* name;
    void (*act)(Values& values);
};

class JSONOutOfMemory : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(
    Operations, JSONOutOfMemory,
    testing::Values(Row{"SetObject", [](Values& v) { v.json.setObject(Tree(5)); }},
                    Row{"SetString", [](Values& v) { v.json.setString(kLong); }},
                    Row{"SetUnsupported", [](Values& v) { v.json.setObject(Tree(std::make_shared<const Lamp>())); }},
                    Row{"SetURL",
                        [](Values& v) { v.json.setURL(json::URL::parse("https://example.org/a/long/path")); }},
                    Row{"AssignValue", [](Values& v) { v.other = JSON(kLong); }},
                    Row{"Assign",
                        [](Values& v) {
                            v.json.assign({"list", 2, "deep"}, kLong);
                        }},
                    Row{"AssignNewMember",
                        [](Values& v) {
                            v.json.assign({"list", 2, kLong}, kLong);
                        }},
                    Row{"SetAt",
                        [](Values& v) {
                            static_cast<void>(v.json.at({"list", 1, 0}).set(kLong));
                        }},
                    Row{"SetWhole", [](Values& v) { static_cast<void>(v.json.at({}).set(kLong)); }},
                    Row{"AppendAt", [](Values& v) { static_cast<void>(v.json.at({"list"}).append(kLong)); }},
                    Row{"InsertAt",
                        [](Values& v) {
                            static_cast<void>(v.json.at({"list", 1}).insert(0, kLong));
                        }},
                    Row{"RemoveElement",
                        [](Values& v) {
                            static_cast<void>(v.json.at({"list", 0}).remove());
                        }},
                    Row{"RemoveMember", [](Values& v) { static_cast<void>(v.json.remove("name")); }}),
    [](const auto& row) { return std::string(row.param.name); });

using Later = FailingMemory::Later;

void changeWithoutMemory(const Row& row, Later later) {
    const Values before;
    const long long lived = FailingMemory::living();
    {
        Values values;
        const auto isAsBefore = [&] {
            EXPECT_TRUE(same(values.json, before.json));
            EXPECT_TRUE(same(values.other, before.other));
        };
        const int failures = FailingMemory::failInTurn(
            later, [&] { row.act(values); }, isAsBefore);
        EXPECT_GT(failures, 0) << "nothing was allocated, so nothing was tried";
    }
    EXPECT_EQ(FailingMemory::living(), lived);
}

TEST_P(JSONOutOfMemory, LeavesTheValueAsItWas) {
    GetParam().act(*std::make_unique<Values>());  // what is made once a process is made here
    changeWithoutMemory(GetParam(), Later::succeed);
    changeWithoutMemory(GetParam(), Later::fail);
}

class JSONReadsOutOfMemory : public testing::TestWithParam<Row> {};
INSTANTIATE_TEST_SUITE_P(
    Operations, JSONReadsOutOfMemory,
    testing::Values(Row{"Parse", [](Values&) { JSON::parse(R"({"a":["a text of more than fifteen bytes",1.5,{}]})"); }},
                    Row{"ParseError",
                        [](Values&) {
                            JSONError error;
                            JSON::parse("[1,]", &error);
                        }},
                    Row{"Missing", [](Values& v) { static_cast<void>(v.json["list"]["missing"]["more"][3]); }},
                    Row{"MissingAlongAPath",
                        [](Values& v) {
                            static_cast<void>(v.json[{"list", 2, "more", kLong}]);
                        }},
                    Row{"Views",
                        [](Values& v) {
                            v.json.dictionary();
                            v.json["list"].array();
                            v.json["list"][2]["deep"].stringValue();
                        }},
                    Row{"Walk",
                        [](Values& v) {
                            for (const auto& [key, member] : v.json["list"])
                                static_cast<void>(key.string() + member.stringValue() + kLong);
                        }},
                    Row{"FromValues",
                        [](Values& v) {
                            JSON(std::vector<JSON>{v.json, v.other, kLong});
                        }},
                    Row{"Compare", [](Values& v) { static_cast<void>(v.json == JSON::parse(R"({"list":[1,2]})")); }},
                    Row{"RawData", [](Values& v) { v.json.rawData(); }},
                    Row{"RawString", [](Values& v) { v.json.rawString(json::TextEncoding::utf8); }}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(JSONReadsOutOfMemory, LosesNothing) {
    Values values;
    GetParam().act(values);  // what is made once a process is made here
    const long long lived = FailingMemory::living();
    for (const Later later : {Later::succeed, Later::fail}) {
        const auto nothingLives = [&] { EXPECT_EQ(FailingMemory::living(), lived); };
        const int failures = FailingMemory::failInTurn(
            later, [&] { GetParam().act(values); }, nothingLives);
        EXPECT_GT(failures, 0) << "nothing was allocated, so nothing was tried";
        nothingLives();
    }
}

}  // namespace
}  // namespace kestrav
