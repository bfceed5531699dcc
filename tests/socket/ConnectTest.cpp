#include <algorithm>
#include <cstdint>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits>

#include "socket/tcp.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

constexpr std::int32_t kLongest = std::numeric_limits<std::int32_t>::max();

class Connects : public ::testing::TestWithParam<std::int32_t> {};

TEST_P(Connects, ToAListenerWithinTheTime) {
    const UniqueFd server = listener();
    const UniqueFd fd(tcp_connect_with_timeout("localhost", portOf(server.get()), GetParam()));
    ASSERT_GT(fd.get(), 0);
    const UniqueFd accepted(::accept(server.get(), nullptr, nullptr));
    EXPECT_EQ(::write(accepted.get(), "hello", 5), 5);
    char text[5] = {};
    EXPECT_EQ(::recv(fd.get(), text, sizeof text, MSG_WAITALL), 5);
}

INSTANTIATE_TEST_SUITE_P(Seconds, Connects, ::testing::Values(1, 10, kLongest / 1000 + 1, kLongest));

TEST(TcpConnect, ReturnsABlockingDescriptorThatChildrenDoNotInherit) {
    const UniqueFd server = listener();
    const UniqueFd fd(tcp_connect_with_timeout("127.0.0.1", portOf(server.get()), 10));
    EXPECT_EQ(::fcntl(fd.get(), F_GETFL) & O_NONBLOCK, 0);
    EXPECT_EQ(::fcntl(fd.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(TcpConnect, FailsWhenTheHostIsUnknown) {
    const std::size_t before = openDescriptors();
    EXPECT_EQ(tcp_connect_with_timeout("256.256.256.256", 9090, 1), -1);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(TcpConnect, LooksTheHostUpBeforeItMakesASocket) {
    const DescriptorLimit limit(64);
    const DescriptorsTaken all(64);
    EXPECT_EQ(tcp_connect_with_timeout("256.256.256.256", 9090, 1), -1);
    EXPECT_EQ(tcp_connect_with_timeout("127.0.0.1", 9090, 1), -2);
}

TEST(TcpConnect, FailsToWaitForANegativeTime) {
    const UniqueFd server = listener();
    const std::size_t before = openDescriptors();
    EXPECT_EQ(tcp_connect_with_timeout("127.0.0.1", portOf(server.get()), -1), -2);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(TcpConnect, TimesOutWhenNobodyAnswers) {
    const FullListener full;
    const std::size_t before = openDescriptors();
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(tcp_connect_with_timeout("127.0.0.1", full.port(), 1), -3);
    EXPECT_GE(secondsSince(start), 1.0);
    EXPECT_LT(secondsSince(start), 30);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(TcpConnect, DoesNotWaitWithATimeOfZero) {
    const FullListener full;
    double shortest = 1;
    // A busy machine may hold any one of them up.
    for (int tries = 0; tries < 50 && shortest >= 0.5; ++tries) {
        const Clock::time_point start = Clock::now();
        EXPECT_EQ(tcp_connect_with_timeout("127.0.0.1", full.port(), 0), -3);
        shortest = std::min(shortest, secondsSince(start));
    }
    EXPECT_LT(shortest, 0.5);
}

TEST(TcpConnect, TimesOutWhenThereIsNoWayToTheHost) {
    // No TCP connection can even be started to the broadcast address: connect itself fails at once.
    const std::size_t before = openDescriptors();
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(tcp_connect_with_timeout("255.255.255.255", 9090, 1), -3);
    EXPECT_GE(secondsSince(start), 1.0);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(TcpConnect, FailsAtOnceWhenRefused) {
    const UniqueFd bound = boundSocket(SOCK_STREAM);
    const std::size_t before = openDescriptors();
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(tcp_connect_with_timeout("127.0.0.1", portOf(bound.get()), 60), -4);
    EXPECT_LT(secondsSince(start), 30);
    EXPECT_EQ(openDescriptors(), before);
}

TEST(TcpConnect, WorksWithDescriptorsBeyondThoseOfSelect) {
    const UniqueFd server = listener();
    const UniqueFd bound = boundSocket(SOCK_STREAM);
    const DescriptorLimit limit(4096);
    const DescriptorsTaken taken(1500);
    const UniqueFd fd(tcp_connect_with_timeout("127.0.0.1", portOf(server.get()), 10));
    EXPECT_GE(fd.get(), 1500);
    EXPECT_EQ(tcp_connect_with_timeout("127.0.0.1", portOf(bound.get()), 10), -4);
}

TEST(TcpClose, ReturnsWhatCloseReturns) {
    UniqueFd fd = boundSocket(SOCK_STREAM);
    const int number = fd.release();
    EXPECT_EQ(tcp_close(number), 0);
    EXPECT_FALSE(isOpen(number));
    EXPECT_EQ(tcp_close(-1), -1);
}

}  // namespace
}  // namespace kestrav
