#include <gtest/gtest.h>

#include "services/asker/areAll.h"
#include "services/asker/fieldIn.h"

namespace kestrav {
namespace {

TEST(FieldIn, IsWhatStandsBehindTheNameAtTheBeginningOfALine) {
    constexpr const char* kStatus = "Name:\tUid: 1\nUid:\t0\t0\t0\t0\nCapEff:\n";
    EXPECT_EQ(fieldIn(kStatus, "Uid:"), "0\t0\t0\t0");
    EXPECT_EQ(fieldIn(kStatus, "CapEff:"), "");
    EXPECT_EQ(fieldIn(kStatus, "Gid:"), "");
    EXPECT_EQ(fieldIn("scm_fds: 2", "scm_fds:"), "2");
    EXPECT_EQ(fieldIn("", "Uid:"), "");
}

TEST(AreAll, IsTrueOfFourTimesTheUser) {
    EXPECT_TRUE(areAll("1000\t1000\t1000\t1000", 1000));
    EXPECT_FALSE(areAll("1000\t0\t1000\t1000", 1000));
    EXPECT_FALSE(areAll("1000\t1000\t1000", 1000));
    EXPECT_FALSE(areAll("1000\t1000\t1000\t1000\t1000", 1000));
    EXPECT_FALSE(areAll("1000 1000 1000 x", 1000));
    EXPECT_FALSE(areAll("", 0));
}

}  // namespace
}  // namespace kestrav
