#include <gtest/gtest.h>
#include <utility>

#include "socket/SocketError.h"
#include "socket/TCPServer.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

TEST(TCPServer, StartsClosedAndAcceptsNothing) {
    TCPServer server("127.0.0.1", 9090);
    EXPECT_EQ(server.address, "127.0.0.1");
    EXPECT_EQ(server.port, 9090);
    EXPECT_FALSE(server.fd);
    EXPECT_FALSE(server.accept());
}

TEST(TCPServer, AcceptsAClientWithItsPortInNetworkOrder) {
    TCPServer server("127.0.0.1", 0);
    server.listen();
    ASSERT_TRUE(server.fd);
    const UniqueFd owner(*server.fd);
    const UniqueFd peer = boundSocket(SOCK_STREAM, "127.0.0.3");
    ASSERT_EQ(connectTo(peer.get(), portOf(owner.get())), 0);
    std::optional<TCPClient> client = server.accept();
    ASSERT_TRUE(client);
    EXPECT_EQ(client->address, "127.0.0.3");
    EXPECT_EQ(client->port, endpointOf(peer.get()).sin_port);
    client->send("hello");
    char text[5] = {};
    EXPECT_EQ(::recv(peer.get(), text, sizeof text, MSG_WAITALL), 5);
    client->close();
}

TEST(TCPServer, RaisesUnknownErrorOnATakenPort) {
    const UniqueFd taken = listener();
    TCPServer server("127.0.0.1", portOf(taken.get()));
    try {
        server.listen();
        FAIL() << "listened on a taken port";
    } catch (const SocketException& exception) {
        EXPECT_EQ(exception.error(), SocketError::unknownError);
    }
    EXPECT_FALSE(server.fd);
}

TEST(TCPServer, TakesANameForTheAddressOfEverybody) {
    TCPServer server("localhost", 0);
    server.listen();
    const UniqueFd owner(server.fd.value());
    EXPECT_EQ(endpointOf(owner.get()).sin_addr.s_addr, INADDR_NONE);
}

TEST(TCPServer, TakesDescriptorZeroForAFailure) {
    TCPServer server("127.0.0.1", 0);
    const DescriptorZeroFree free;
    try {
        server.listen();
        ADD_FAILURE() << "listened on descriptor 0";
    } catch (const SocketException& exception) {
        EXPECT_EQ(exception.error(), SocketError::unknownError);
    }
    EXPECT_TRUE(isOpen(STDIN_FILENO)) << "another descriptor was tried";
    EXPECT_FALSE(server.fd);
}

TEST(TCPServer, HandsItsDescriptorOverInAnAssignment) {
    TCPServer first("127.0.0.1", 0);
    first.listen();
    ASSERT_TRUE(first.fd);
    const UniqueFd owner(*first.fd);
    TCPServer second("127.0.0.9", 9);
    second = std::move(first);
    EXPECT_EQ(second.address, "127.0.0.1");
    EXPECT_EQ(second.port, 0);
    EXPECT_EQ(second.fd, owner.get());
    EXPECT_FALSE(first.fd);  // NOLINT(bugprone-use-after-move): it is closed, and that is what is looked at
}

TEST(TCPServer, AcceptsNothingOnADescriptorThatIsNoListener) {
    const UniqueFd bound = boundSocket(SOCK_STREAM);
    TCPServer server("127.0.0.1", 0);
    server.fd = bound.get();
    EXPECT_FALSE(server.accept());
}

TEST(TCPServer, StaysOpenWhenDestroyed) {
    int fd = -1;
    {
        TCPServer server("127.0.0.1", 0);
        server.listen();
        fd = *server.fd;
    }
    const UniqueFd owner(fd);
    EXPECT_TRUE(isOpen(fd));
}

}  // namespace
}  // namespace kestrav
