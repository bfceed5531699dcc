#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <thread>

#include "socket/tcp.h"
#include "tests/base/isAsleep.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

/// Sends from another thread as soon as this one has to wait for something.
std::thread later(int fd, const char* text) {
    return std::thread([fd, text, waiting = ::gettid()] {
        EXPECT_TRUE(waitUntilAsleep(waiting));
        ::send(fd, text, std::strlen(text), MSG_NOSIGNAL);
    });
}

class ReadWaits : public ::testing::TestWithParam<std::int32_t> {};

TEST_P(ReadWaits, ForDataToArrive) {
    const auto [here, there] = connectedPair();
    std::thread sender = later(there.get(), "hello");
    std::array<char, 16> buffer{};
    EXPECT_EQ(tcp_read_with_timeout(here.get(), buffer.data(), 16, GetParam()), 5);
    EXPECT_STREQ(buffer.data(), "hello");
    sender.join();
}

// 0 and less wait without limit; thousandths of the large ones don't fit 32 bits.
INSTANTIATE_TEST_SUITE_P(Seconds, ReadWaits,
                         ::testing::Values(120, 0, -1, std::numeric_limits<std::int32_t>::min(), 2147484,
                                           std::numeric_limits<std::int32_t>::max()));

TEST(TcpRead, ReturnsZeroWhenTheTimeIsOver) {
    const auto [here, there] = connectedPair();
    std::array<char, 4> buffer{'k', 'e', 'p', 't'};
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(tcp_read_with_timeout(here.get(), buffer.data(), 4, 1), 0);
    EXPECT_GE(secondsSince(start), 1.0);
    EXPECT_LT(secondsSince(start), 30);
    EXPECT_EQ(std::string(buffer.data(), 4), "kept");
}

TEST(TcpRead, ReadsOnceAndLeavesTheRest) {
    const auto [here, there] = connectedPair();
    ::send(there.get(), "hello", 5, 0);
    std::array<char, 16> buffer{};
    EXPECT_EQ(tcp_read_with_timeout(here.get(), buffer.data(), 3, 10), 3);
    EXPECT_STREQ(buffer.data(), "hel");
    EXPECT_EQ(tcp_read_with_timeout(here.get(), buffer.data(), 16, 10), 2);
}

TEST(TcpRead, DoesNotGatherLaterPieces) {
    const auto [here, there] = connectedPair();
    ::send(there.get(), "first", 5, 0);
    std::thread sender = later(there.get(), "second");
    std::array<char, 16> buffer{};
    EXPECT_EQ(tcp_read_with_timeout(here.get(), buffer.data(), 16, 10), 5);
    sender.join();
}

TEST(TcpRead, ReturnsZeroAtTheEndOfTheStream) {
    auto [here, there] = connectedPair();
    there.reset();
    char byte = 0;
    EXPECT_EQ(tcp_read_with_timeout(here.get(), &byte, 1, 10), 0);
    EXPECT_EQ(tcp_read_with_timeout(here.get(), &byte, 1, 0), 0);
}

TEST(TcpRead, FailsAfterAReset) {
    auto [here, there] = connectedPair();
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(there.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    there.reset();
    char byte = 0;
    EXPECT_EQ(tcp_read_with_timeout(here.get(), &byte, 1, 10), -1);
}

class ReadWithoutADescriptor : public ::testing::TestWithParam<std::int32_t> {};

TEST_P(ReadWithoutADescriptor, FailsAtOnce) {
    UniqueFd closed = boundSocket(SOCK_STREAM);
    const int number = closed.get();
    closed.reset();
    char byte = 0;
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(tcp_read_with_timeout(number, &byte, 1, GetParam()), -1);
    EXPECT_EQ(tcp_read_with_timeout(-1, &byte, 1, GetParam()), -1);
    EXPECT_LT(secondsSince(start), 30);
}

INSTANTIATE_TEST_SUITE_P(Seconds, ReadWithoutADescriptor, ::testing::Values(0, 60));

TEST(TcpRead, FailsWithANegativeLength) {
    const auto [here, there] = connectedPair();
    ::send(there.get(), "hello", 5, 0);
    char byte = 'k';
    EXPECT_EQ(tcp_read_with_timeout(here.get(), &byte, -1, 10), -1);
    EXPECT_EQ(byte, 'k');
}

TEST(TcpRead, WorksWithDescriptorsBeyondThoseOfSelect) {
    const auto [low, there] = connectedPair();
    const DescriptorLimit limit(4096);
    const UniqueFd high(::fcntl(low.get(), F_DUPFD_CLOEXEC, 2000));
    ASSERT_GE(high.get(), 2000);
    char byte = 0;
    EXPECT_EQ(tcp_read_with_timeout(high.get(), &byte, 1, 1), 0);
    ::send(there.get(), "x", 1, 0);
    EXPECT_EQ(tcp_read_with_timeout(high.get(), &byte, 1, 10), 1);
    EXPECT_EQ(tcp_read_with_timeout(3000, &byte, 1, 10), -1);
}

}  // namespace
}  // namespace kestrav
