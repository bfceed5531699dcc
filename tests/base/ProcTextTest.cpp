// What the kernel writes under /proc, as text.

#include <gtest/gtest.h>

#include "base/TcpTableLine.h"
#include "base/startTimeIn.h"

namespace kestrav {
namespace {

TEST(StartTimeIn, IsFieldTwentyTwoWhateverTheProcessIsCalled) {
    EXPECT_EQ(startTimeIn("7 (a) b ( 1 2) S 1 7 7 0 -1 4194560 1 2 3 4 5 6 7 8 20 0 1 0 1234567 1 2\n"), 1234567U);
}

TEST(StartTimeIn, IsNothingWhereThereIsNoSuchField) {
    EXPECT_FALSE(startTimeIn(""));
    EXPECT_FALSE(startTimeIn("7 (a) S 1 7 7 0 -1 4194560 1 2 3 4 5 6 7 8 20 0 1 0"));
    EXPECT_FALSE(startTimeIn("7 (a) S 1 7 7 0 -1 4194560 1 2 3 4 5 6 7 8 20 0 1 0 x"));
    EXPECT_FALSE(startTimeIn("7 a S 1 7 7 0 -1 4194560 1 2 3 4 5 6 7 8 20 0 1 0 1234567"));
}

TEST(TcpTableLine, HasTheEndsTheStateTheUserAndTheInode) {
    const auto socket = TcpTableLine::parse(
        "   1: 0100007F:2382 0100007F:D2C4 0A 00000000:00000000 00:00000000 00000000  1000        0 531307 1 00 20 "
        "4\n");
    ASSERT_TRUE(socket);
    EXPECT_EQ(socket->local, "0100007F:2382");
    EXPECT_EQ(socket->remote, "0100007F:D2C4");
    EXPECT_EQ(socket->state, 10U);
    EXPECT_EQ(socket->uid, 1000U);
    EXPECT_EQ(socket->inode, 531307U);
}

TEST(TcpTableLine, IsNotTheNamesOfTheColumnsNorHalfALine) {
    EXPECT_FALSE(TcpTableLine::parse(
        "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode"));
    EXPECT_FALSE(TcpTableLine::parse("1: 0100007F:2382 0100007F:D2C4 0A 0:0 00:0 0 1000 0"));
    EXPECT_FALSE(TcpTableLine::parse("1: 0100007F:2382 0100007F:D2C4 0A 0:0 00:0 0 -1 0 5"));
    EXPECT_FALSE(TcpTableLine::parse("1: 0100007F:2382 0100007F:D2C4 0A 0:0 00:0 0 1000x 0 5"));
    EXPECT_FALSE(TcpTableLine::parse("1: 0100007F:2382 0100007F:D2C4 0AG 0:0 00:0 0 1000 0 5"));
    EXPECT_FALSE(TcpTableLine::parse(""));
}

}  // namespace
}  // namespace kestrav
