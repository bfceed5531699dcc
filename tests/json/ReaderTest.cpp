#include <gtest/gtest.h>

#include "json/Reader.h"
#include "json/Writer.h"

namespace kestrav {
namespace {

std::string rewritten(std::string_view json) {
    const auto result = readJSON(json);
    if (const auto* error = std::get_if<ReadError>(&result)) return error->message;
    return dataWithJSONObject(std::get<Tree>(result));
}

TEST(Reader, ReadsWhatTheWriterWrites) {
    const std::string json = R"({"a":[1,-2,3.5,true,false,null],"b":{"c":"d\n\"é"},"e":[],"f":{}})";
    EXPECT_EQ(rewritten(json), json);
}

TEST(Reader, LetsTheLastOfEqualKeysWin) {
    EXPECT_EQ(rewritten(R"({"a":1,"b":2,"a":3})"), R"({"a":3,"b":2})");
}

TEST(Reader, RefusesAMillionOpeningBrackets) {
    EXPECT_EQ(rewritten(std::string(1'000'000, '[')), "too deep");
}

}  // namespace
}  // namespace kestrav
