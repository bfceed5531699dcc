#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <string_view>

#include "services/commandd/RequestScan.h"
#include "services/commandd/readRequest.h"

namespace kestrav {
namespace {

using State = RequestScan::State;

struct ScanRow {
    std::string name;
    std::string bytes;
    State state;

    friend void PrintTo(const ScanRow& row, std::ostream* out) { *out << row.name; }
};

class Scan : public testing::TestWithParam<ScanRow> {};

TEST_P(Scan, FindsTheEndInOnePiece) {
    EXPECT_EQ(RequestScan().take(GetParam().bytes), GetParam().state);
}

TEST_P(Scan, FindsTheSameEndByteByByte) {
    RequestScan scan;
    for (const char byte : GetParam().bytes)
        scan.take(std::string_view(&byte, 1));
    EXPECT_EQ(scan.state(), GetParam().state);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Scan,
    testing::Values(ScanRow{"Nothing", "", State::incomplete}, ScanRow{"Open", "{", State::incomplete},
                    ScanRow{"Empty", "{}", State::complete}, ScanRow{"Nested", R"({"a":[{}]})", State::complete},
                    ScanRow{"NestedOpen", R"({"a":[{}])", State::incomplete},
                    ScanRow{"BraceInText", R"({"a":"}"})", State::complete},
                    ScanRow{"OpenText", R"({"a":"})", State::incomplete},
                    ScanRow{"EscapedQuote", R"({"a":"\"}"})", State::complete},
                    ScanRow{"EscapedBackslash", R"({"a":"\\"})", State::complete},
                    ScanRow{"Behind", "{}{", State::moreBehindIt}, ScanRow{"LineEnd", "{} \t\r\n", State::complete},
                    ScanRow{"BehindTheLineEnd", "{}\n{", State::moreBehindIt},
                    ScanRow{"Http", "POST / HTTP/1.1\r\n", State::noObject}, ScanRow{"List", "[]", State::noObject},
                    ScanRow{"Blank", " {}", State::noObject}, ScanRow{"Mark", "\xef\xbb\xbf{}", State::noObject},
                    ScanRow{"OtherBracketCloses", "{]", State::complete}),
    [](const auto& row) { return row.param.name; });

TEST(ReadRequest, TakesBothOrdersOfTheMembers) {
    for (const char* text : {R"({"command":"dd","arguments":["bs=512"]})", R"({"arguments":["bs=512"],"command":"dd"})",
                             R"({"command":"dd","arguments":["bs=\u0035\u00312"]})"}) {
        const auto request = readRequest(text);
        ASSERT_TRUE(request) << text;
        EXPECT_EQ(request.value().command, "dd");
        EXPECT_EQ(request.value().arguments, std::vector<std::string>{"bs=512"});
    }
}

TEST(ReadRequest, TakesAnEmptyList) {
    const auto request = readRequest(R"({"command":"umount","arguments":[]})");
    ASSERT_TRUE(request);
    EXPECT_TRUE(request.value().arguments.empty());
}

TEST(ReadRequest, KeepsEscapedCharacters) {
    const auto request = readRequest(R"({"command":"a\"b\\\/\n\u0000","arguments":["\ud83d\udcc0"]})");
    ASSERT_TRUE(request);
    EXPECT_EQ(request.value().command, std::string("a\"b\\/\n\0", 7));
    EXPECT_EQ(request.value().arguments[0], "\xf0\x9f\x93\x80");
}

struct BadRequestRow {
    std::string name;
    std::string text;
    std::string said;

    friend void PrintTo(const BadRequestRow& row, std::ostream* out) { *out << row.name; }
};

class BadRequest : public testing::TestWithParam<BadRequestRow> {};

TEST_P(BadRequest, IsRefused) {
    const auto request = readRequest(GetParam().text);
    ASSERT_FALSE(request);
    EXPECT_NE(request.problem().sentence.find(GetParam().said), std::string::npos) << request.problem().sentence;
}

std::string manyArguments() {
    std::string list = "\"x\"";
    for (int i = 0; i < 64; ++i)
        list += ",\"x\"";
    return R"({"command":"dd","arguments":[)" + list + "]}";
}

constexpr const char* members = "has exactly the members";

INSTANTIATE_TEST_SUITE_P(
    Rows, BadRequest,
    testing::Values(BadRequestRow{"Empty", "{}", members}, BadRequestRow{"NoArguments", R"({"command":"dd"})", members},
                    BadRequestRow{"NoCommand", R"({"arguments":[]})", members},
                    BadRequestRow{"OneMore", R"({"command":"dd","arguments":[],"x":1})", members},
                    BadRequestRow{"OtherCase", R"({"Command":"dd","arguments":[]})", members},
                    BadRequestRow{"CommandNumber", R"({"command":1,"arguments":[]})", members},
                    BadRequestRow{"CommandNull", R"({"command":null,"arguments":[]})", members},
                    BadRequestRow{"CommandList", R"({"command":["dd"],"arguments":[]})", members},
                    BadRequestRow{"ArgumentsText", R"({"command":"dd","arguments":"bs=512"})", members},
                    BadRequestRow{"ArgumentsMap", R"({"command":"dd","arguments":{}})", members},
                    BadRequestRow{"ArgumentNumber", R"({"command":"dd","arguments":[512]})", members},
                    BadRequestRow{"ArgumentList", R"({"command":"dd","arguments":[["x"]]})", members},
                    BadRequestRow{"TooMany", manyArguments(), "too many arguments"},
                    BadRequestRow{"NotClosed", R"({"command":"dd")", "not JSON, which shows at byte 15"},
                    BadRequestRow{"OtherBracket", "{]", "not JSON"}, BadRequestRow{"Comma", "{,}", "not JSON"},
                    BadRequestRow{"BadUtf8", "{\"command\":\"\xff\",\"arguments\":[]}", "not JSON"},
                    BadRequestRow{"RawControl", "{\"command\":\"\n\",\"arguments\":[]}", "not JSON"}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace kestrav
