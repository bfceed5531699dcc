#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <optional>
#include <string>
#include <sys/mman.h>

#include "socket/SocketError.h"
#include "socket/TCPClient.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

using ::testing::KilledBySignal;

constexpr std::int64_t kTooLarge = std::int64_t{1} << 31;

template <typename Action>
std::optional<SocketError> raisedBy(Action action) {
    try {
        action();
    } catch (const SocketException& exception) {
        return exception.error();
    }
    return std::nullopt;
}

/// A client that is connected to `peer`.
struct Connection {
    Connection() {
        auto [here, there] = connectedPair();
        client.fd = here.release();
        peer = std::move(there);
    }
    ~Connection() { client.close(); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    std::string received() const {
        std::array<char, 64> buffer{};
        const ssize_t count = ::recv(peer.get(), buffer.data(), buffer.size(), 0);
        return {buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0};
    }

    TCPClient client{"127.0.0.1", 9090};
    UniqueFd peer;
};

std::string asText(const std::optional<std::vector<std::byte>>& bytes) {
    return bytes ? std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size()) : "absent";
}

TEST(TCPClient, StartsClosed) {
    const TCPClient client("localhost", 9090);
    EXPECT_EQ(client.address, "localhost");
    EXPECT_EQ(client.port, 9090);
    EXPECT_FALSE(client.fd);
}

TEST(TCPClient, ConnectsAndCloses) {
    const UniqueFd server = listener();
    TCPClient client("127.0.0.1", portOf(server.get()));
    client.connect(10);
    ASSERT_TRUE(client.fd);
    const int fd = *client.fd;
    client.close();
    EXPECT_FALSE(client.fd);
    EXPECT_FALSE(isOpen(fd));
    client.close();
    EXPECT_FALSE(client.fd);
}

TEST(TCPClient, RaisesQueryFailedForAnUnknownHost) {
    TCPClient client("256.256.256.256", 9090);
    EXPECT_EQ(raisedBy([&] { client.connect(1); }), SocketError::queryFailed);
    EXPECT_FALSE(client.fd);
}

TEST(TCPClient, RaisesConnectionClosedWhenWaitingFails) {
    const UniqueFd server = listener();
    TCPClient client("127.0.0.1", portOf(server.get()));
    EXPECT_EQ(raisedBy([&] { client.connect(-1); }), SocketError::connectionClosed);
    EXPECT_FALSE(client.fd);
}

TEST(TCPClient, RaisesConnectionTimeout) {
    const FullListener full;
    TCPClient client("127.0.0.1", full.port());
    EXPECT_EQ(raisedBy([&] { client.connect(1); }), SocketError::connectionTimeout);
    EXPECT_FALSE(client.fd);
}

TEST(TCPClient, RaisesUnknownErrorWhenRefused) {
    const UniqueFd bound = boundSocket(SOCK_STREAM);
    TCPClient client("127.0.0.1", portOf(bound.get()));
    EXPECT_EQ(raisedBy([&] { client.connect(10); }), SocketError::unknownError);
    EXPECT_FALSE(client.fd);
}

// In a process of its own: descriptor 0 is not above 0 and so no connection.
[[noreturn]] void connectWithDescriptorZero(std::int32_t port) {
    ::close(STDIN_FILENO);
    TCPClient client("127.0.0.1", port);
    const auto raised = raisedBy([&] { client.connect(10); });
    std::_Exit(raised == SocketError::unknownError && !client.fd ? 0 : 1);
}

TEST(TCPClient, RaisesUnknownErrorForDescriptorZero) {
    const UniqueFd server = listener();
    EXPECT_EXIT(connectWithDescriptorZero(portOf(server.get())), ::testing::ExitedWithCode(0), "");
}

struct Text {
    std::string_view given;
    std::string_view sent;
};

class TCPClientSendsText : public ::testing::TestWithParam<Text> {};

TEST_P(TCPClientSendsText, UpToTheFirstNulWithNothingAdded) {
    Connection connection;
    connection.client.send(GetParam().given);
    ::shutdown(*connection.client.fd, SHUT_WR);
    EXPECT_EQ(connection.received(), GetParam().sent);
}

INSTANTIATE_TEST_SUITE_P(Texts, TCPClientSendsText,
                         ::testing::Values(Text{"größe", "größe"}, Text{"", ""},
                                           Text{std::string_view("cut\0here", 8), "cut"},
                                           Text{std::string_view("\0", 1), ""}));

TEST(TCPClient, SendsBytesWithTheirNuls) {
    Connection connection;
    const std::array<std::byte, 3> bytes{std::byte{1}, std::byte{0}, std::byte{255}};
    connection.client.send(bytes);
    EXPECT_EQ(connection.received(), std::string("\x01\0\xff", 3));
}

TEST(TCPClient, RaisesConnectionClosedWhenItSendsWithoutADescriptor) {
    TCPClient client("127.0.0.1", 9090);
    EXPECT_EQ(raisedBy([&] { client.send("text"); }), SocketError::connectionClosed);
    EXPECT_EQ(raisedBy([&] { client.send(""); }), SocketError::connectionClosed);
    EXPECT_EQ(raisedBy([&] { client.send(std::array<std::byte, 2>{}); }), SocketError::connectionClosed);
}

TEST(TCPClient, RaisesUnknownErrorWhenNotAllIsSent) {
    Connection connection;
    ::shutdown(*connection.client.fd, SHUT_WR);
    EXPECT_EQ(raisedBy([&] { connection.client.send("text"); }), SocketError::unknownError);
    EXPECT_EQ(raisedBy([&] { connection.client.send(std::array<std::byte, 2>{}); }), SocketError::unknownError);
    EXPECT_TRUE(isOpen(*connection.client.fd));
}

TEST(TCPClient, ReadsWhatIsThere) {
    Connection connection;
    ::send(connection.peer.get(), "he\0lo", 5, 0);
    EXPECT_EQ(asText(connection.client.read(3, 10)), std::string("he\0", 3));
    EXPECT_EQ(asText(connection.client.read(10240, 10)), "lo");
}

TEST(TCPClient, ReadsNothingWithoutADescriptor) {
    TCPClient client("127.0.0.1", 9090);
    EXPECT_EQ(client.read(16, 1), std::nullopt);
    EXPECT_EQ(client.read(-1, 1), std::nullopt);
}

TEST(TCPClient, ReadsNothingWhenTheTimeIsOver) {
    Connection connection;
    EXPECT_EQ(connection.client.read(16, 1), std::nullopt);
    EXPECT_TRUE(connection.client.fd);
}

TEST(TCPClient, ReadsNothingWhenThePeerHasClosed) {
    Connection connection;
    connection.peer.reset();
    EXPECT_EQ(connection.client.read(16, 10), std::nullopt);
}

TEST(TCPClient, ReadsNothingWithALengthOfZero) {
    Connection connection;
    ::send(connection.peer.get(), "x", 1, 0);
    EXPECT_EQ(connection.client.read(0, 10), std::nullopt);
}

TEST(TCPClient, DoesNotCloseWhenDestroyed) {
    auto [here, there] = connectedPair();
    {
        TCPClient client("127.0.0.1", 9090);
        client.fd = here.get();
    }
    EXPECT_TRUE(isOpen(here.get()));
}

TEST(TCPClient, HandsItsDescriptorOnWhenMoved) {
    Connection connection;
    const int fd = *connection.client.fd;
    TCPClient other(std::move(connection.client));
    EXPECT_EQ(other.fd, fd);
    EXPECT_FALSE(connection.client.fd);  // NOLINT(bugprone-use-after-move): that it is closed is the contract
    other.close();
}

TEST(TCPClient, HandsItsDescriptorOverInAnAssignment) {
    Connection connection;
    Connection replaced;
    const UniqueFd before(*replaced.client.fd);
    const int fd = *connection.client.fd;
    replaced.client = std::move(connection.client);
    EXPECT_EQ(replaced.client.fd, fd);
    EXPECT_FALSE(connection.client.fd);  // NOLINT(bugprone-use-after-move): that it is closed is the contract
    EXPECT_TRUE(isOpen(before.get())) << "an assignment closes as little as the destructor does";
    replaced.client.send("hello");
    EXPECT_EQ(connection.received(), "hello");
    TCPClient& itself = replaced.client;
    replaced.client = std::move(itself);
    EXPECT_EQ(replaced.client.fd, fd);
    EXPECT_EQ(replaced.client.address, "127.0.0.1");
}

class TCPClientDeathTest : public ::testing::TestWithParam<std::int64_t> {};

TEST_P(TCPClientDeathTest, StopsTheProcessWhenASizeOrTimeDoesNotFit) {
    Connection connection;
    EXPECT_EXIT(TCPClient("127.0.0.1", 9090).connect(GetParam()), KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(connection.client.read(1, GetParam()), KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(connection.client.read(GetParam(), 1), KilledBySignal(SIGABRT), "");
}

INSTANTIATE_TEST_SUITE_P(Values, TCPClientDeathTest,
                         ::testing::Values(kTooLarge, -kTooLarge - 1, std::numeric_limits<std::int64_t>::max(),
                                           std::numeric_limits<std::int64_t>::min()));

TEST(TCPClientDeathTest, StopsTheProcessWhenALengthIsNegative) {
    Connection connection;
    EXPECT_EXIT(connection.client.read(-1, 1), KilledBySignal(SIGABRT), "");
}

TEST(TCPClientDeathTest, StopsTheProcessWhenTheDataIsTooLong) {
    // Address space alone: nothing of it is read, for the length is judged first.
    void* space =
        ::mmap(nullptr, std::size_t{kTooLarge}, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(space, MAP_FAILED);
    const std::span bytes(static_cast<const std::byte*>(space), std::size_t{kTooLarge});
    Connection connection;
    EXPECT_EXIT(connection.client.send(bytes), KilledBySignal(SIGABRT), "");
    ::munmap(space, std::size_t{kTooLarge});
}

}  // namespace
}  // namespace kestrav
