#include <arpa/inet.h>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <netinet/tcp.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "base/UniqueFd.h"
#include "base/findTcpSocket.h"
#include "tests/base/lesserKernel.h"
#include "tests/eventually.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

sockaddr_in endAt(const char* address, std::uint16_t port) {
    sockaddr_in end{};
    end.sin_family = AF_INET;
    end.sin_port = htons(port);
    end.sin_addr.s_addr = ::inet_addr(address);
    return end;
}

UniqueFd tcpSocket() {
    return UniqueFd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

UniqueFd listenOn(const char* address) {
    UniqueFd listening = boundSocket(SOCK_STREAM, address);
    EXPECT_EQ(::listen(listening.get(), 5), 0);
    return listening;
}

void connectTo(const UniqueFd& socket, const sockaddr_in& there) {
    EXPECT_EQ(::connect(socket.get(), reinterpret_cast<const sockaddr*>(&there), sizeof there), 0);
}

unsigned stateOf(const UniqueFd& socket) {
    tcp_info info{};
    socklen_t length = sizeof info;
    EXPECT_EQ(::getsockopt(socket.get(), IPPROTO_TCP, TCP_INFO, &info, &length), 0);
    return info.tcpi_state;
}

/// A socket as a look names it.
std::string named(const UniqueFd& socket) {
    struct stat status {};
    EXPECT_EQ(::fstat(socket.get(), &status), 0);
    return std::to_string(::geteuid()) + " " + std::to_string(status.st_ino);
}

std::string named(const SocketLook& look) {
    if (!look.answered) return "no answer";
    return look.socket ? std::to_string(look.socket->uid) + " " + std::to_string(look.socket->inode) : "none";
}

/// Looks by sock_diag, or else in the table of connections.
class FindTcpSocket : public testing::TestWithParam<bool> {
  protected:
    static std::string found(const std::function<SocketLook()>& look) {
        return inAProcess([&look] {
            if (!GetParam()) loseSockDiag();
            return named(look());
        });
    }
    static std::string connected(const sockaddr_in& local, const sockaddr_in& remote) {
        return found([&] { return findConnectedSocket(local, remote); });
    }
    static std::string listening(const sockaddr_in& local) {
        return found([&] { return findListeningSocket(local); });
    }

    const UniqueFd listener_ = listenOn("127.0.0.1");
    const sockaddr_in there_ = endpointOf(listener_.get());
};
INSTANTIATE_TEST_SUITE_P(By, FindTcpSocket, testing::Bool(),
                         [](const auto& row) { return row.param ? "SockDiag" : "TheTable"; });

TEST_P(FindTcpSocket, TellsTheConnectionsOfOnePortApart) {
    std::vector<UniqueFd> clients, services;
    for (int made = 0; made < 3; ++made) {
        clients.push_back(tcpSocket());
        connectTo(clients.back(), there_);
        services.emplace_back(::accept(listener_.get(), nullptr, nullptr));
    }
    for (std::size_t at = 0; at < clients.size(); ++at) {
        const sockaddr_in here = endpointOf(clients[at].get());
        EXPECT_EQ(connected(here, there_), named(clients[at]));
        EXPECT_EQ(connected(there_, here), named(services[at]));
    }
}

TEST_P(FindTcpSocket, TellsTheConnectionsToOnePeerApart) {
    const UniqueFd otherListener = listenOn("127.0.0.1");
    const UniqueFd client = tcpSocket();
    connectTo(client, there_);
    const sockaddr_in here = endpointOf(client.get());
    const UniqueFd fromElsewhere = boundSocket(SOCK_STREAM, "127.0.0.2", ntohs(here.sin_port));
    connectTo(fromElsewhere, there_);
    EXPECT_EQ(connected(here, there_), named(client));
    EXPECT_EQ(connected(endpointOf(fromElsewhere.get()), there_), named(fromElsewhere));
    EXPECT_EQ(connected(here, endpointOf(otherListener.get())), "none");
}

TEST_P(FindTcpSocket, FindsAConnectionThatHasEndedItsSending) {
    const UniqueFd client = tcpSocket();
    connectTo(client, there_);
    ASSERT_EQ(::shutdown(client.get(), SHUT_WR), 0);
    ASSERT_TRUE(eventually([&] { return stateOf(client) == TCP_FIN_WAIT2; }));
    EXPECT_EQ(connected(endpointOf(client.get()), there_), named(client));
}

TEST_P(FindTcpSocket, FindsAConnectionWhosePeerTakesNothingMore) {
    const UniqueFd client = tcpSocket();
    connectTo(client, there_);
    ASSERT_EQ(::fcntl(client.get(), F_SETFL, O_NONBLOCK), 0);
    const std::string bytes(1 << 16, 'x');
    // What is on its way meanwhile makes room once more.
    ASSERT_TRUE(eventually([&] {
        while (::send(client.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) > 0) {
        }
        int waiting = 0, unsent = 0;
        ::ioctl(client.get(), SIOCOUTQ, &waiting);
        ::ioctl(client.get(), SIOCOUTQNSD, &unsent);
        return unsent > 0 && waiting == unsent;
    }));
    ASSERT_EQ(::shutdown(client.get(), SHUT_WR), 0);
    ASSERT_EQ(stateOf(client), unsigned{TCP_FIN_WAIT1});
    EXPECT_EQ(connected(endpointOf(client.get()), there_), named(client));
}

TEST_P(FindTcpSocket, FindsNoConnectionThatNobodyHasOpenAnyMore) {
    UniqueFd client = tcpSocket();
    connectTo(client, there_);
    const UniqueFd service(::accept(listener_.get(), nullptr, nullptr));
    const sockaddr_in here = endpointOf(client.get());
    client.reset();
    EXPECT_EQ(connected(here, there_), "none");
    EXPECT_EQ(connected(there_, here), "none");
}

TEST_P(FindTcpSocket, TakesNoListenerForAConnection) {
    EXPECT_EQ(connected(there_, endAt("127.0.0.1", 1)), "none");
}

TEST_P(FindTcpSocket, FindsTheListenerAmongItsConnections) {
    const UniqueFd client = tcpSocket();
    connectTo(client, there_);
    const UniqueFd service(::accept(listener_.get(), nullptr, nullptr));
    EXPECT_EQ(listening(there_), named(listener_));
    EXPECT_EQ(listening(endpointOf(client.get())), "none");
}

TEST_P(FindTcpSocket, FindsTheListenerOfEveryAddress) {
    const UniqueFd everywhere = listenOn("0.0.0.0");
    EXPECT_EQ(listening(endAt("127.0.0.1", ntohs(endpointOf(everywhere.get()).sin_port))), named(everywhere));
    EXPECT_EQ(listening(endAt("127.0.0.2", ntohs(there_.sin_port))), "none");
}

TEST_P(FindTcpSocket, TakesNoConnectionForTheListenerThatIsGone) {
    UniqueFd listener = listenOn("127.0.0.1");
    const sockaddr_in there = endpointOf(listener.get());
    const UniqueFd client = tcpSocket();
    connectTo(client, there);
    const UniqueFd service(::accept(listener.get(), nullptr, nullptr));
    listener.reset();
    EXPECT_EQ(listening(there), "none");
    EXPECT_EQ(connected(there, endpointOf(client.get())), named(service));
}

TEST(FindTcpSocketNowhere, SaysThatTheSystemTellsNothing) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: mounts";
    const auto inTheDark = [](const std::function<SocketLook()>& look) {
        return inAProcess([&look] {
            loseProc();
            loseSockDiag();
            return named(look());
        });
    };
    EXPECT_EQ(inTheDark([] { return findListeningSocket(endAt("127.0.0.1", 9090)); }), "no answer");
    EXPECT_EQ(inTheDark([] { return findConnectedSocket(endAt("127.0.0.1", 9090), endAt("127.0.0.1", 1)); }),
              "no answer");
}

TEST(EndsOf, AreThoseOfAConnectionOfIPv4) {
    const UniqueFd listener = listenOn("127.0.0.1");
    const UniqueFd client = tcpSocket();
    sockaddr_in local{}, remote{};
    EXPECT_FALSE(endsOf(client.get(), local, remote));
    connectTo(client, endpointOf(listener.get()));
    ASSERT_TRUE(endsOf(client.get(), local, remote));
    EXPECT_EQ(local.sin_port, endpointOf(client.get()).sin_port);
    EXPECT_EQ(remote.sin_port, endpointOf(listener.get()).sin_port);
    EXPECT_EQ(remote.sin_addr.s_addr, ::inet_addr("127.0.0.1"));

    int pair[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair), 0);
    const UniqueFd one(pair[0]), other(pair[1]);
    EXPECT_FALSE(endsOf(one.get(), local, remote));
    EXPECT_FALSE(endsOf(-1, local, remote));
}

}  // namespace
}  // namespace kestrav
