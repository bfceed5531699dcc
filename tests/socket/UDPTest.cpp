#include <array>
#include <bit>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>

#include "socket/udp.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

std::int32_t freeUdpPort() {
    return portOf(boundSocket(SOCK_DGRAM, "0.0.0.0").get());
}

class UdpServerBindAny : public ::testing::TestWithParam<const char*> {};

TEST_P(UdpServerBindAny, TakesThePortOnAnyInterfaceWithBroadcastAllowed) {
    const std::int32_t port = freeUdpPort();
    const UniqueFd fd(udp_server_bind(GetParam(), port));
    ASSERT_GT(fd.get(), 0);
    EXPECT_EQ(endpointOf(fd.get()).sin_addr.s_addr, htonl(INADDR_ANY));
    EXPECT_EQ(portOf(fd.get()), port);
    EXPECT_EQ(option(fd.get(), SO_BROADCAST), 1);
    EXPECT_EQ(option(fd.get(), SO_REUSEADDR), 0);
    EXPECT_EQ(::fcntl(fd.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST_P(UdpServerBindAny, FailsOnATakenPortAndLeavesTheDescriptorOpen) {
    const UniqueFd taken = boundSocket(SOCK_DGRAM, "0.0.0.0");
    const std::size_t before = openDescriptors();
    EXPECT_EQ(udp_server_bind(GetParam(), portOf(taken.get())), -1);
    EXPECT_EQ(openDescriptors(), before + 1);
}

INSTANTIATE_TEST_SUITE_P(Addresses, UdpServerBindAny, ::testing::Values(nullptr, "", "255.255.255.255"));

class UdpServerBindNamed : public ::testing::TestWithParam<const char*> {};

TEST_P(UdpServerBindNamed, TakesTheZeroAddressAndAnotherPort) {
    const UniqueFd taken = boundSocket(SOCK_DGRAM, "0.0.0.0");
    const UniqueFd fd(udp_server_bind(GetParam(), portOf(taken.get())));
    ASSERT_GT(fd.get(), 0);
    EXPECT_EQ(endpointOf(fd.get()).sin_addr.s_addr, htonl(INADDR_ANY));
    EXPECT_NE(portOf(fd.get()), portOf(taken.get()));
    EXPECT_NE(portOf(fd.get()), 0);
    EXPECT_EQ(option(fd.get(), SO_REUSEADDR), 1);
    EXPECT_EQ(option(fd.get(), SO_BROADCAST), 0);
}

INSTANTIATE_TEST_SUITE_P(Addresses, UdpServerBindNamed, ::testing::Values("127.0.0.1", "0.0.0.0", "no address"));

TEST(UdpServerBind, FailsWithoutADescriptor) {
    const DescriptorLimit limit(64);
    const DescriptorsTaken all(64);
    EXPECT_EQ(udp_server_bind("", 0), -1);
    EXPECT_EQ(udp_server_bind("127.0.0.1", 0), -1);
}

struct Sender {
    std::string address;
    std::int32_t port;
};

std::int32_t receive(int fd, void* buffer, std::int32_t length, Sender& sender) {
    std::array<char, 16> text{};
    const std::int32_t count = udp_receive_from(fd, buffer, length, text.data(), &sender.port);
    sender.address = text.data();
    return count;
}

TEST(UdpReceiveFrom, TellsTheSenderWithItsPortInNetworkOrder) {
    const UniqueFd here = boundSocket(SOCK_DGRAM);
    const UniqueFd there = boundSocket(SOCK_DGRAM, "127.0.0.2", 9090);
    ASSERT_EQ(udp_send_to(there.get(), "hello", 5, "127.0.0.1", portOf(here.get())), 5);
    std::array<char, 16> buffer{};
    Sender sender{};
    EXPECT_EQ(receive(here.get(), buffer.data(), 16, sender), 5);
    EXPECT_STREQ(buffer.data(), "hello");
    EXPECT_EQ(sender.address, "127.0.0.2");
    EXPECT_EQ(sender.port, std::endian::native == std::endian::little ? 0x8223 : 0x2382);
}

TEST(UdpReceiveFrom, CutsALongDatagram) {
    const UniqueFd here = boundSocket(SOCK_DGRAM);
    ASSERT_EQ(udp_send_to(here.get(), "first", 5, "127.0.0.1", portOf(here.get())), 5);
    ASSERT_EQ(udp_send_to(here.get(), "2", 1, "127.0.0.1", portOf(here.get())), 1);
    std::array<char, 3> buffer{};
    Sender sender{};
    EXPECT_EQ(receive(here.get(), buffer.data(), 3, sender), 3);
    EXPECT_EQ(receive(here.get(), buffer.data(), 3, sender), 1);
}

TEST(UdpReceiveFrom, TellsTheSenderToWhomeverHasNoRoom) {
    const UniqueFd here = boundSocket(SOCK_DGRAM);
    ASSERT_EQ(udp_send_to(here.get(), "hello", 5, "127.0.0.1", portOf(here.get())), 5);
    char byte = 'x';
    Sender sender{};
    EXPECT_EQ(receive(here.get(), &byte, 0, sender), 0);
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(sender.address, "127.0.0.1");
}

TEST(UdpReceiveFrom, FailsWithZeroesForTheSender) {
    char byte = 0;
    const UniqueFd here = boundSocket(SOCK_DGRAM);
    for (const auto& [fd, length] : {std::pair{-1, 1}, std::pair{here.get(), -1}}) {
        Sender sender{"", 42};
        EXPECT_EQ(receive(fd, &byte, length, sender), -1);
        EXPECT_EQ(sender.address, "0.0.0.0");
        EXPECT_EQ(sender.port, 0);
    }
}

TEST(UdpClientOpen, OpensADatagramSocket) {
    const UniqueFd fd(udp_client_open());
    EXPECT_EQ(option(fd.get(), SO_TYPE), SOCK_DGRAM);
    EXPECT_EQ(option(fd.get(), SO_REUSEADDR), 1);
    EXPECT_EQ(option(fd.get(), SO_BROADCAST), 0);
    EXPECT_EQ(::fcntl(fd.get(), F_GETFD) & FD_CLOEXEC, FD_CLOEXEC);
}

TEST(UdpEnableBroadcast, ReturnsTheResultOfTheOption) {
    const UniqueFd fd(udp_client_open());
    EXPECT_EQ(udp_enable_broadcast(fd.get()), 0);
    EXPECT_EQ(option(fd.get(), SO_BROADCAST), 1);
    EXPECT_EQ(udp_enable_broadcast(-1), -1);
}

TEST(UdpSendTo, TakesTheDottedFormsOfAnAddress) {
    const UniqueFd here = boundSocket(SOCK_DGRAM);
    const UniqueFd there(udp_client_open());
    EXPECT_EQ(udp_send_to(there.get(), "a\0b", 3, "127.1", portOf(here.get())), 3);
    std::array<char, 4> buffer{};
    EXPECT_EQ(::recv(here.get(), buffer.data(), buffer.size(), 0), 3);
}

TEST(UdpSendTo, FailsWithoutADescriptorOrWithoutBroadcastOrWithANegativeLength) {
    const UniqueFd fd(udp_client_open());
    EXPECT_EQ(udp_send_to(-1, "x", 1, "127.0.0.1", 9090), -1);
    EXPECT_EQ(udp_send_to(fd.get(), "x", 1, "no address", 9090), -1);
    EXPECT_EQ(udp_send_to(fd.get(), "x", -1, "127.0.0.1", 9090), -1);
}

TEST(UdpClose, ReturnsWhatCloseReturns) {
    const std::int32_t fd = udp_client_open();
    EXPECT_EQ(udp_close(fd), 0);
    EXPECT_FALSE(isOpen(fd));
    EXPECT_EQ(udp_close(-1), -1);
}

}  // namespace
}  // namespace kestrav
