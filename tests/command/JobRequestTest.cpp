#include <gtest/gtest.h>

#include "command/JobArguments.h"
#include "command/JobRequest.h"
#include "json/record/JSONRepresentation.h"
#include "json/tree/dataWithJSONObject.h"

namespace kestrav {
namespace {

TEST(JobRequest, IsAMapOfItsTwoFields) {
    const Tree map = JSONRepresentation(JobRequest{"dd", {"bs=512"}});
    ASSERT_TRUE(map.isMap());
    EXPECT_EQ(map.size(), 2U);
    ASSERT_NE(map.member("command"), nullptr);
    ASSERT_NE(map.member("arguments"), nullptr);
    EXPECT_EQ(*map.member("command"), Tree("dd"));
    EXPECT_EQ(*map.member("arguments"), Tree::list({Tree("bs=512")}));
}

TEST(JobRequest, KeepsAnEmptyListAsAMember) {
    EXPECT_EQ(dataWithJSONObject(JSONRepresentation(JobRequest{})), R"({"command":"","arguments":[]})");
}

TEST(JobArguments, IsAMapOfItsName) {
    EXPECT_EQ(dataWithJSONObject(JSONRepresentation(JobArguments{"dd"})), R"({"name":"dd"})");
}

}  // namespace
}  // namespace kestrav
