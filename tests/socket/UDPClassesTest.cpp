#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <utility>

#include "socket/SocketError.h"
#include "socket/UDPClient.h"
#include "socket/UDPServer.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

using ::testing::KilledBySignal;

template <typename Action>
std::optional<SocketError> raisedBy(Action action) {
    try {
        action();
    } catch (const SocketException& exception) {
        return exception.error();
    }
    return std::nullopt;
}

std::string receivedBy(int fd) {
    std::array<char, 64> buffer{};
    const ssize_t count = ::recv(fd, buffer.data(), buffer.size(), MSG_DONTWAIT);
    return count < 0 ? "nothing" : std::string(buffer.data(), static_cast<std::size_t>(count));
}

TEST(UDPClient, TakesTheResolvedAddress) {
    UDPClient client("localhost", 4242);
    EXPECT_EQ(client.address, "127.0.0.1");
    EXPECT_EQ(client.port, 4242);
    EXPECT_TRUE(client.fd);
    client.close();
}

TEST(UDPClient, IsEmptyWhenTheHostIsUnknown) {
    UDPClient client("256.256.256.256", 4242);
    EXPECT_EQ(client.address, "");
    EXPECT_EQ(client.port, 0);
    EXPECT_FALSE(client.fd);
    EXPECT_EQ(raisedBy([&] { client.send("text"); }), SocketError::connectionClosed);
    EXPECT_EQ(raisedBy([&] { client.send(std::array<std::byte, 2>{}); }), SocketError::connectionClosed);
    client.enableBroadcast();
    client.close();
    EXPECT_FALSE(client.fd);
}

TEST(UDPClient, KeepsItsEndpointWhenNoSocketCanBeMade) {
    const DescriptorLimit limit(64);
    const DescriptorsTaken all(64);
    const UDPClient client("127.0.0.1", 4242);
    EXPECT_EQ(client.address, "127.0.0.1");
    EXPECT_EQ(client.port, 4242);
    EXPECT_FALSE(client.fd);
}

TEST(UDPClient, TakesDescriptorZeroForAFailure) {
    const DescriptorZeroFree free;
    const UDPClient client("127.0.0.1", 4242);
    EXPECT_TRUE(isOpen(STDIN_FILENO)) << "another descriptor was tried";
    EXPECT_FALSE(client.fd);
}

TEST(UDPServer, TakesDescriptorZeroForAFailure) {
    const DescriptorZeroFree free;
    const UDPServer server("", 0);
    EXPECT_TRUE(isOpen(STDIN_FILENO)) << "another descriptor was tried";
    EXPECT_FALSE(server.fd);
}

TEST(UDPClient, HandsItsDescriptorOverInAnAssignment) {
    UDPClient first("127.0.0.1", 4242);
    const UniqueFd owner(first.fd.value());
    UDPClient second("127.0.0.9", 9);
    const UniqueFd replaced(second.fd.value());
    second = std::move(first);
    EXPECT_EQ(second.address, "127.0.0.1");
    EXPECT_EQ(second.port, 4242);
    EXPECT_EQ(second.fd, owner.get());
    EXPECT_FALSE(first.fd);  // NOLINT(bugprone-use-after-move): it is closed, and that is what is looked at
    EXPECT_TRUE(isOpen(replaced.get())) << "an assignment closes as little as the destructor does";
}

TEST(UDPServer, HandsItsDescriptorOverInAnAssignment) {
    UDPServer first("", 0);
    const UniqueFd owner(first.fd.value());
    UDPServer second("", 0);
    const UniqueFd replaced(second.fd.value());
    second = std::move(first);
    EXPECT_EQ(second.fd, owner.get());
    EXPECT_FALSE(first.fd);  // NOLINT(bugprone-use-after-move): it is closed, and that is what is looked at
}

TEST(UDPClient, SendsTextsUpToTheirFirstNulAndBytesWhole) {
    const UniqueFd peer = boundSocket(SOCK_DGRAM);
    UDPClient client("127.0.0.1", portOf(peer.get()));
    client.send(std::string_view("cut\0here", 8));
    client.send("");
    client.send(std::array<std::byte, 2>{std::byte{0}, std::byte{7}});
    EXPECT_EQ(receivedBy(peer.get()), "cut");
    EXPECT_EQ(receivedBy(peer.get()), "");
    EXPECT_EQ(receivedBy(peer.get()), std::string("\0\x07", 2));
    EXPECT_EQ(receivedBy(peer.get()), "nothing");
    client.close();
}

TEST(UDPClient, RaisesUnknownErrorWhenSendingFails) {
    UDPClient client("255.255.255.255", 4242);
    EXPECT_EQ(raisedBy([&] { client.send("without leave to broadcast"); }), SocketError::unknownError);
    const std::string tooLong(70000, 'x');
    EXPECT_EQ(raisedBy([&] { client.send(tooLong); }), SocketError::unknownError);
    client.close();
}

TEST(UDPClient, EnablesBroadcast) {
    UDPClient client("127.0.0.1", 4242);
    EXPECT_EQ(option(*client.fd, SO_BROADCAST), 0);
    client.enableBroadcast();
    EXPECT_EQ(option(*client.fd, SO_BROADCAST), 1);
    client.close();
}

TEST(UDPClient, ClosesOnceAndNotByItself) {
    int fd = -1;
    { fd = *UDPClient("127.0.0.1", 4242).fd; }
    EXPECT_TRUE(isOpen(fd));
    UDPClient client("127.0.0.1", 4242);
    ::close(*client.fd);
    client.fd = fd;
    client.close();
    EXPECT_FALSE(isOpen(fd));
    EXPECT_FALSE(client.fd);
    client.close();
}

TEST(UDPServer, ReceivesFromAnyInterface) {
    UDPServer server("", 0);
    ASSERT_TRUE(server.fd);
    const UniqueFd owner(*server.fd);
    const UniqueFd peer = boundSocket(SOCK_DGRAM, "127.0.0.2");
    sockaddr_in here = endpointOf(owner.get());
    here.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::sendto(peer.get(), "he\0lo", 5, 0, reinterpret_cast<const sockaddr*>(&here), sizeof here);
    const UDPServer::Datagram datagram = server.receive(4);
    ASSERT_TRUE(datagram.bytes);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(datagram.bytes->data()), datagram.bytes->size()),
              std::string("he\0l", 4));
    EXPECT_EQ(datagram.address, "127.0.0.2");
    EXPECT_EQ(datagram.port, endpointOf(peer.get()).sin_port);
}

/// What a server that has room for 16 bytes receives of a client's text.
UDPServer::Datagram received(const char* text) {
    UDPServer server("", 0);
    const UniqueFd owner(*server.fd);
    UDPClient client("127.0.0.1", portOf(owner.get()));
    client.send(text);
    client.close();
    return server.receive(16);
}

TEST(UDPServer, HasAsManyBytesAsHaveArrived) {
    const UDPServer::Datagram datagram = received("hello");
    ASSERT_TRUE(datagram.bytes);
    EXPECT_EQ(datagram.bytes->size(), 5U);
}

TEST(UDPServer, HasNoBytesForAnEmptyDatagram) {
    const UDPServer::Datagram datagram = received("");
    EXPECT_FALSE(datagram.bytes);
    EXPECT_EQ(datagram.address, "127.0.0.1");
    EXPECT_NE(datagram.port, 0);
}

TEST(UDPServer, KeepsTheAddressThatItDoesNotBind) {
    const UDPServer server("127.0.0.1", 4242);
    const UniqueFd owner(*server.fd);
    EXPECT_EQ(server.address, "127.0.0.1");
    EXPECT_EQ(server.port, 4242);
    EXPECT_EQ(endpointOf(owner.get()).sin_addr.s_addr, htonl(INADDR_ANY));
}

TEST(UDPServer, ReceivesNothingWhenItsPortIsTaken) {
    const UniqueFd taken = boundSocket(SOCK_DGRAM, "0.0.0.0");
    UDPServer server("", portOf(taken.get()));
    EXPECT_FALSE(server.fd);
    const UDPServer::Datagram datagram = server.receive(16);
    EXPECT_FALSE(datagram.bytes);
    EXPECT_EQ(datagram.address, "no ip");
    EXPECT_EQ(datagram.port, 0);
}

TEST(UDPServerDeathTest, StopsTheProcessWhenALengthIsNegativeOrDoesNotFit) {
    UDPServer server("", 0);
    const UniqueFd owner(*server.fd);
    EXPECT_EXIT(server.receive(-1), KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(server.receive(std::int64_t{1} << 31), KilledBySignal(SIGABRT), "");
}

}  // namespace
}  // namespace kestrav
