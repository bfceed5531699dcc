#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

#include "socket/tcp.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

TEST(TcpListen, ListensOnTheAddress) {
    const UniqueFd fd(tcp_listen("127.0.0.1", 0));
    ASSERT_GT(fd.get(), 0);
    EXPECT_EQ(endpointOf(fd.get()).sin_addr.s_addr, htonl(INADDR_LOOPBACK));
    EXPECT_EQ(option(fd.get(), SO_ACCEPTCONN), 1);
    EXPECT_EQ(option(fd.get(), SO_REUSEADDR), 1);
    EXPECT_EQ(::fcntl(fd.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(TcpListen, ListensOnThePort) {
    UniqueFd free = boundSocket(SOCK_STREAM);
    const std::int32_t port = portOf(free.get());
    free.reset();
    const UniqueFd fd(tcp_listen("127.0.0.1", port));
    EXPECT_EQ(portOf(fd.get()), port);
}

TEST(TcpListen, FailsOnATakenPortAndLeavesTheDescriptorOpen) {
    const UniqueFd taken = listener();
    const std::size_t before = openDescriptors();
    EXPECT_EQ(tcp_listen("127.0.0.1", portOf(taken.get())), -1);
    EXPECT_EQ(openDescriptors(), before + 1);
}

TEST(TcpListen, FailsWithoutADescriptor) {
    const DescriptorLimit limit(64);
    const DescriptorsTaken all(64);
    EXPECT_EQ(tcp_listen("127.0.0.1", 0), -1);
}

struct Peer {
    std::string address;
    std::int32_t port;
};

std::int32_t acceptFrom(int fd, Peer& peer) {
    std::array<char, 16> text{};
    const std::int32_t accepted = tcp_accept(fd, text.data(), &peer.port);
    peer.address = text.data();
    return accepted;
}

TEST(TcpAccept, TellsThePeerWithItsPortInNetworkOrder) {
    const UniqueFd server = listener();
    const UniqueFd client = boundSocket(SOCK_STREAM, "127.0.0.2", 9090);
    ASSERT_EQ(connectTo(client.get(), portOf(server.get())), 0);
    Peer peer{};
    const UniqueFd accepted(acceptFrom(server.get(), peer));
    EXPECT_GT(accepted.get(), 0);
    EXPECT_EQ(peer.address, "127.0.0.2");
    EXPECT_EQ(peer.port, std::endian::native == std::endian::little ? 0x8223 : 0x2382);
    EXPECT_EQ(::fcntl(accepted.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(TcpAccept, CopiesTheTextWithoutANul) {
    const UniqueFd server = listener();
    const UniqueFd client(::socket(AF_INET, SOCK_STREAM, 0));
    ASSERT_EQ(connectTo(client.get(), portOf(server.get())), 0);
    std::array<char, 16> text{};
    text.fill('x');
    std::int32_t port = 0;
    const UniqueFd accepted(tcp_accept(server.get(), text.data(), &port));
    EXPECT_EQ(std::string(text.begin(), text.end()), "127.0.0.1xxxxxxx");
}

TEST(TcpAccept, FailsWithZeroesForThePeer) {
    Peer peer{"", 42};
    EXPECT_EQ(acceptFrom(-1, peer), -1);
    EXPECT_EQ(peer.address, "0.0.0.0");
    EXPECT_EQ(peer.port, 0);
}

// In a process of its own, whose standard input is closed so that 0 is the next descriptor.
[[noreturn]] void acceptIntoDescriptorZero(int server) {
    ::close(STDIN_FILENO);
    Peer peer{};
    const bool failed = acceptFrom(server, peer) == -1;
    std::_Exit(failed && peer.address == "127.0.0.1" && isOpen(STDIN_FILENO) ? 0 : 1);
}

TEST(TcpAccept, TakesDescriptorZeroForAFailure) {
    const UniqueFd server = listener();
    const UniqueFd client(::socket(AF_INET, SOCK_STREAM, 0));
    ASSERT_EQ(connectTo(client.get(), portOf(server.get())), 0);
    EXPECT_EXIT(acceptIntoDescriptorZero(server.get()), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace kestrav
