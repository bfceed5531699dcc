#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "services/asker/PeerIdentity.h"
#include "services/asker/SocketAsker.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/gate/GateWithoutDisks.h"

namespace kestrav {
namespace {

struct Connected {
    Connected() : listener(listenOnFreePort(port)), client(port), service(::accept(listener.get(), nullptr, nullptr)) {}

    std::uint16_t port = 0;
    UniqueFd listener;
    Client client;
    UniqueFd service;
};

TEST(PeerIdentity, IsTheOtherEndsSocket) {
    const Connected pair;
    struct stat status {};
    ASSERT_EQ(::fstat(pair.client.socket(), &status), 0);
    const auto identity = peerIdentity(pair.service.get());
    ASSERT_TRUE(identity);
    EXPECT_EQ(identity.value().uid, ::geteuid());
    EXPECT_EQ(identity.value().inode, status.st_ino);
}

TEST(PeerIdentity, StaysWhenThePeerOnlyEndsItsSending) {
    const Connected pair;
    const auto before = peerIdentity(pair.service.get());
    pair.client.finishSending();
    const auto after = peerIdentity(pair.service.get());
    ASSERT_TRUE(before && after);
    EXPECT_EQ(after.value(), before.value());
}

TEST(PeerIdentity, IsNobodyOnceThePeerHasClosed) {
    Connected pair;
    pair.client.close();
    EXPECT_FALSE(peerIdentity(pair.service.get()));
}

/// Makes the peer vanish without a word, so that the other end goes on believing in the connection, and listens on the
/// peer's port in its place. Nothing when another program was quicker to take that port.
UniqueFd takePlaceOfPeer(Connected& pair) {
    sockaddr_in peer{};
    socklen_t length = sizeof peer;
    const int yes = 1;
    if (::getpeername(pair.service.get(), reinterpret_cast<sockaddr*>(&peer), &length) != 0) return {};
    if (::setsockopt(pair.client.socket(), IPPROTO_TCP, TCP_REPAIR, &yes, sizeof yes) != 0) return {};
    pair.client.close();
    UniqueFd other(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ::setsockopt(other.get(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    const bool listens = ::bind(other.get(), reinterpret_cast<const sockaddr*>(&peer), length) == 0 &&
                         ::listen(other.get(), 1) == 0 &&
                         ::getpeername(pair.service.get(), reinterpret_cast<sockaddr*>(&peer), &length) == 0;
    return listens ? std::move(other) : UniqueFd();
}

TEST(PeerIdentity, IsNotAnotherSocketOnThePeersPort) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: TCP_REPAIR";
    for (int tries = 0; tries < 50; ++tries) {
        Connected pair;
        const UniqueFd other = takePlaceOfPeer(pair);
        if (!other) continue;
        EXPECT_FALSE(peerIdentity(pair.service.get()));
        return;
    }
    FAIL() << "could not take the peer's place";
}

TEST(PeerIdentity, IsNobodyOnOtherSockets) {
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    const UniqueFd one(ends[0]);
    const UniqueFd two(ends[1]);
    EXPECT_FALSE(peerIdentity(one.get()));
    EXPECT_FALSE(peerIdentity(-1));
}

class RequestOfAPeer : public GateWithoutDisks {
  protected:
    void SetUp() override {
        const auto identity = peerIdentity(pair_.service.get());
        ASSERT_TRUE(identity);
        identity_ = identity.value();
    }
    SocketAsker asker() const { return {pair_.service.get(), identity_}; }

    Connected pair_;
    PeerIdentity identity_{};
};

TEST_F(RequestOfAPeer, IsAnsweredByTheGate) {
    SocketAsker peer = asker();
    EXPECT_TRUE(peer.mayBePrompted());
    EXPECT_TRUE(peer.stillWants());
    EXPECT_EQ(remove(peer).text, "Refused: \"rm\" is not a command of this service.");
}

TEST_F(RequestOfAPeer, AsksNobodyAboutTheServicesOwnUser) {
    consent_.problem = refused("no.");
    SocketAsker peer = asker();
    unmount(peer);
    EXPECT_EQ(consent_.askedAbout.size(), 0U);
}

TEST_F(RequestOfAPeer, BeginsNothingForOneThatHasGone) {
    SocketAsker peer = asker();
    pair_.client.close();
    EXPECT_EQ(remove(peer).kind, GateAnswer::Kind::notBegun);
    EXPECT_FALSE(peer.stillWants());
    EXPECT_TRUE(log_.entries().empty());
}

TEST_F(RequestOfAPeer, BeginsNothingForAnother) {
    ++identity_.inode;
    SocketAsker peer = asker();
    EXPECT_EQ(remove(peer).kind, GateAnswer::Kind::notBegun);
    EXPECT_TRUE(log_.entries().empty());
}

}  // namespace
}  // namespace kestrav
