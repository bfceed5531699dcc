#include <array>
#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "socket/tcp.h"
#include "socket/udp.h"
#include "tests/socket/Loopback.h"
#include "tests/socket/SignalShower.h"

namespace kestrav {
namespace {

constexpr std::chrono::milliseconds kAWhile(300);

template <typename Action>
std::thread later(Action action) {
    return std::thread([action] {
        std::this_thread::sleep_for(kAWhile);
        action();
    });
}

TEST(Interruption, DoesNotShortenOrProlongTheWaitForAConnection) {
    const FullListener full;
    const SignalShower shower;
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(tcp_connect_with_timeout("127.0.0.1", full.port(), 1), -3);
    EXPECT_GE(secondsSince(start), 1.0);
    EXPECT_LT(secondsSince(start), 2.5);
    EXPECT_GT(shower.interruptions(), 10);
}

TEST(Interruption, DoesNotShortenOrProlongTheWaitForData) {
    const auto [here, there] = connectedPair();
    const SignalShower shower;
    const Clock::time_point start = Clock::now();
    char byte = 0;
    EXPECT_EQ(tcp_read_with_timeout(here.get(), &byte, 1, 1), 0);
    EXPECT_GE(secondsSince(start), 1.0);
    EXPECT_LT(secondsSince(start), 2.5);
    EXPECT_GT(shower.interruptions(), 10);
}

class InterruptedRead : public ::testing::TestWithParam<std::int32_t> {};

TEST_P(InterruptedRead, StillGetsTheData) {
    const auto [here, there] = connectedPair();
    std::thread sender = later([fd = there.get()] { ::send(fd, "x", 1, 0); });
    const SignalShower shower;
    char byte = 0;
    EXPECT_EQ(tcp_read_with_timeout(here.get(), &byte, 1, GetParam()), 1);
    EXPECT_GT(shower.interruptions(), 0);
    sender.join();
}

INSTANTIATE_TEST_SUITE_P(Seconds, InterruptedRead, ::testing::Values(10, 0));

TEST(Interruption, DoesNotBreakAWriteOff) {
    auto [here, there] = connectedPair();
    const std::string sent(16 << 20, 's');
    std::size_t received = 0;
    std::thread reader = later([fd = there.get(), &received] {
        std::array<char, 65536> buffer{};
        ssize_t count = 0;
        while ((count = ::read(fd, buffer.data(), buffer.size())) > 0)
            received += static_cast<std::size_t>(count);
    });
    {
        const SignalShower shower;
        EXPECT_EQ(tcp_write_all(here.get(), sent.data(), 16 << 20), 16 << 20);
        EXPECT_GT(shower.interruptions(), 10);
    }
    here.reset();
    reader.join();
    EXPECT_EQ(received, sent.size());
}

TEST(Interruption, DoesNotBreakAWriteToAPipeOff) {
    int ends[2] = {-1, -1};
    ASSERT_EQ(::pipe(ends), 0);
    const UniqueFd end(ends[0]);
    const UniqueFd start(ends[1]);
    const std::string sent(1 << 20, 's');
    std::thread reader = later([fd = end.get()] {
        std::string buffer(1 << 20, '\0');
        std::size_t count = 0;
        while (count < buffer.size())
            count += static_cast<std::size_t>(::read(fd, buffer.data(), buffer.size()));
    });
    const SignalShower shower;
    EXPECT_EQ(tcp_write_all(start.get(), sent.data(), 1 << 20), 1 << 20);
    EXPECT_GT(shower.interruptions(), 10);
    reader.join();
}

TEST(Interruption, DoesNotBreakAcceptOff) {
    const UniqueFd server = listener();
    const UniqueFd client(::socket(AF_INET, SOCK_STREAM, 0));
    std::thread connector =
        later([fd = client.get(), port = portOf(server.get())] { EXPECT_EQ(connectTo(fd, port), 0); });
    const SignalShower shower;
    std::array<char, 16> peer{};
    std::int32_t port = 0;
    const UniqueFd accepted(tcp_accept(server.get(), peer.data(), &port));
    EXPECT_GT(accepted.get(), 0);
    EXPECT_GT(shower.interruptions(), 10);
    connector.join();
}

TEST(Interruption, DoesNotBreakReceivingOff) {
    const UniqueFd here = boundSocket(SOCK_DGRAM);
    const UniqueFd there = boundSocket(SOCK_DGRAM);
    std::thread sender = later(
        [fd = there.get(), port = portOf(here.get())] { EXPECT_EQ(udp_send_to(fd, "x", 1, "127.0.0.1", port), 1); });
    const SignalShower shower;
    char byte = 0;
    std::array<char, 16> peer{};
    std::int32_t port = 0;
    EXPECT_EQ(udp_receive_from(here.get(), &byte, 1, peer.data(), &port), 1);
    EXPECT_GT(shower.interruptions(), 10);
    sender.join();
}

}  // namespace
}  // namespace kestrav
