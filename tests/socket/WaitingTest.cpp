#include <gtest/gtest.h>

#include "socket/waitUntilConnected.h"
#include "socket/waitUntilReadable.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

TEST(WaitUntilReadable, FailsOnAClosedDescriptor) {
    UniqueFd fd = boundSocket(SOCK_STREAM);
    const int number = fd.get();
    fd.reset();
    EXPECT_EQ(waitUntilReadable(number, 1), -1);
    EXPECT_EQ(waitUntilReadable(-1, 1), -1);
}

TEST(WaitUntilReadable, FailsWithANegativeTime) {
    const auto [here, there] = connectedPair();
    ::send(there.get(), "x", 1, 0);
    EXPECT_EQ(waitUntilReadable(here.get(), -1), -1);
    EXPECT_EQ(waitUntilReadable(here.get(), 0), 1);
}

TEST(WaitUntilConnected, FailsOnAClosedDescriptor) {
    UniqueFd fd = boundSocket(SOCK_STREAM);
    const int number = fd.get();
    fd.reset();
    EXPECT_EQ(waitUntilConnected(number, 1), -1);
    EXPECT_EQ(waitUntilConnected(-1, 1), -1);
}

TEST(WaitUntilConnected, LetsTheTimeRunOutOnASocketThatNeverConnects) {
    const UniqueFd fd = boundSocket(SOCK_STREAM);
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(waitUntilConnected(fd.get(), 1), 0);
    EXPECT_GE(secondsSince(start), 1.0);
}

}  // namespace
}  // namespace kestrav
