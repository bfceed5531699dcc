#include <array>
#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "socket/tcp.h"
#include "socket/udp.h"
#include "tests/socket/Loopback.h"
#include "tests/socket/SignalShower.h"

namespace kestrav {
namespace {

/// Does something on another thread once the one under the shower has been interrupted many times.
template <typename Action>
std::thread later(const SignalShower& shower, Action action) {
    return std::thread([&shower, action] {
        shower.waitForMany();
        action();
    });
}

/// Has `wait`, which takes seconds, wait under a shower, and longer until it was interrupted many times: on a busy
/// machine a second has room for few. Whoever began anew with each signal would not come back before the bound.
template <typename Wait>
void expectTheWholeWait(Wait wait) {
    for (std::int32_t seconds = 1; seconds <= 16; seconds *= 2) {
        const SignalShower shower;
        const Clock::time_point start = Clock::now();
        wait(seconds);
        EXPECT_GE(secondsSince(start), seconds);
        EXPECT_LT(secondsSince(start), seconds + 30);
        if (shower.interruptions() >= SignalShower::kMany) return;
    }
    FAIL() << "hardly interrupted";
}

TEST(Interruption, DoesNotShortenOrProlongTheWaitForAConnection) {
    const FullListener full;
    expectTheWholeWait(
        [&full](std::int32_t seconds) { EXPECT_EQ(tcp_connect_with_timeout("127.0.0.1", full.port(), seconds), -3); });
}

TEST(Interruption, DoesNotShortenOrProlongTheWaitForData) {
    const auto [here, there] = connectedPair();
    expectTheWholeWait([fd = here.get()](std::int32_t seconds) {
        char byte = 0;
        EXPECT_EQ(tcp_read_with_timeout(fd, &byte, 1, seconds), 0);
    });
}

class InterruptedRead : public ::testing::TestWithParam<std::int32_t> {};

TEST_P(InterruptedRead, StillGetsTheData) {
    const auto [here, there] = connectedPair();
    const SignalShower shower;
    std::thread sender = later(shower, [fd = there.get()] { ::send(fd, "x", 1, 0); });
    char byte = 0;
    EXPECT_EQ(tcp_read_with_timeout(here.get(), &byte, 1, GetParam()), 1);
    sender.join();
    EXPECT_GE(shower.interruptions(), SignalShower::kMany);
}

INSTANTIATE_TEST_SUITE_P(Seconds, InterruptedRead, ::testing::Values(120, 0));

TEST(Interruption, DoesNotBreakAWriteOff) {
    auto [here, there] = connectedPair();
    const std::string sent(16 << 20, 's');
    std::size_t received = 0;
    const SignalShower shower;
    std::thread reader = later(shower, [fd = there.get(), &received] {
        std::array<char, 65536> buffer{};
        ssize_t count = 0;
        while ((count = ::read(fd, buffer.data(), buffer.size())) > 0)
            received += static_cast<std::size_t>(count);
    });
    EXPECT_EQ(tcp_write_all(here.get(), sent.data(), 16 << 20), 16 << 20);
    EXPECT_GE(shower.interruptions(), SignalShower::kMany);
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
    const SignalShower shower;
    std::thread reader = later(shower, [fd = end.get()] {
        std::string buffer(1 << 20, '\0');
        std::size_t count = 0;
        while (count < buffer.size())
            count += static_cast<std::size_t>(::read(fd, buffer.data(), buffer.size()));
    });
    EXPECT_EQ(tcp_write_all(start.get(), sent.data(), 1 << 20), 1 << 20);
    EXPECT_GE(shower.interruptions(), SignalShower::kMany);
    reader.join();
}

TEST(Interruption, DoesNotBreakAcceptOff) {
    const UniqueFd server = listener();
    const UniqueFd client(::socket(AF_INET, SOCK_STREAM, 0));
    const SignalShower shower;
    std::thread connector =
        later(shower, [fd = client.get(), port = portOf(server.get())] { EXPECT_EQ(connectTo(fd, port), 0); });
    std::array<char, 16> peer{};
    std::int32_t port = 0;
    const UniqueFd accepted(tcp_accept(server.get(), peer.data(), &port));
    EXPECT_GT(accepted.get(), 0);
    EXPECT_GE(shower.interruptions(), SignalShower::kMany);
    connector.join();
}

TEST(Interruption, DoesNotBreakReceivingOff) {
    const UniqueFd here = boundSocket(SOCK_DGRAM);
    const UniqueFd there = boundSocket(SOCK_DGRAM);
    const SignalShower shower;
    std::thread sender = later(shower, [fd = there.get(), port = portOf(here.get())] {
        EXPECT_EQ(udp_send_to(fd, "x", 1, "127.0.0.1", port), 1);
    });
    char byte = 0;
    std::array<char, 16> peer{};
    std::int32_t port = 0;
    EXPECT_EQ(udp_receive_from(here.get(), &byte, 1, peer.data(), &port), 1);
    EXPECT_GE(shower.interruptions(), SignalShower::kMany);
    sender.join();
}

}  // namespace
}  // namespace kestrav
