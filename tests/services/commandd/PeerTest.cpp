#include <arpa/inet.h>
#include <chrono>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <optional>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include "services/commandd/CallerJudge.h"
#include "services/commandd/Connection.h"
#include "services/commandd/PeerIdentity.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/commandd/RunnerWithoutDisks.h"

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
    EXPECT_EQ(identity->uid, ::geteuid());
    EXPECT_EQ(identity->inode, status.st_ino);
}

TEST(PeerIdentity, StaysWhenThePeerOnlyEndsItsSending) {
    const Connected pair;
    const auto before = peerIdentity(pair.service.get());
    pair.client.finishSending();
    EXPECT_TRUE(before);
    EXPECT_EQ(peerIdentity(pair.service.get()), before);
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

TEST(EverybodyWithConsent, TurnsNobodyAway) {
    EXPECT_FALSE(EverybodyWithConsent().refusal(0));
    EXPECT_FALSE(EverybodyWithConsent().refusal(1001));
}

TEST(DrainUntilClosed, TakesAllThatStillComes) {
    using namespace std::chrono_literals;
    Connected pair;
    std::thread sending([&pair] {
        for (int i = 0; i < 3; ++i) {
            pair.client.send("more");
            std::this_thread::sleep_for(50ms);
        }
        pair.client.close();
    });
    const auto start = std::chrono::steady_clock::now();
    drainUntilClosed(pair.service.get());
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1900ms);
    char byte = 0;
    EXPECT_EQ(::recv(pair.service.get(), &byte, 1, MSG_DONTWAIT), 0);  // the end, with nothing left before it
    sending.join();
}

TEST(DrainUntilClosed, DoesNotWaitForeverForASilentPeer) {
    using namespace std::chrono_literals;
    const Connected pair;
    const auto start = std::chrono::steady_clock::now();
    drainUntilClosed(pair.service.get());
    const auto taken = std::chrono::steady_clock::now() - start;
    EXPECT_GE(taken, 1900ms);
    EXPECT_LT(taken, 4s);
}

TEST(RootAndOwnUser, TurnsEveryoneElseAway) {
    const RootAndOwnUser judge(1000);
    EXPECT_FALSE(judge.refusal(0));
    EXPECT_FALSE(judge.refusal(1000));
    EXPECT_EQ(judge.refusal(1001), "user 1001 may not write the accessory; an administrator has to.");
    EXPECT_TRUE(judge.refusal(65534));
}

class RunRequest : public RunnerWithoutDisks {
  protected:
    Connected pair_;
};

TEST_F(RunRequest, AnswersThroughTheGate) {
    const auto peer = peerIdentity(pair_.service.get());
    ASSERT_TRUE(peer);
    runner_.run(pair_.service.get(), *peer, R"({"command":"rm","arguments":["-rf","/"]})");
    EXPECT_EQ(pair_.client.readOnce(), "Refused: \"rm\" is not a command of this service.");
}

TEST_F(RunRequest, AsksNobodyAboutTheServicesOwnUser) {
    const auto peer = peerIdentity(pair_.service.get());
    ASSERT_TRUE(peer);
    consent_.answer = refused("no.");
    runner_.run(pair_.service.get(), *peer, R"({"command":"umount","arguments":["/dev/sdzzs1"]})");
    EXPECT_EQ(consent_.askedAbout.size(), 0U);
}

TEST_F(RunRequest, BeginsNothingForAPeerThatHasGone) {
    const auto peer = peerIdentity(pair_.service.get());
    ASSERT_TRUE(peer);
    pair_.client.close();
    runner_.run(pair_.service.get(), *peer, R"({"command":"rm","arguments":["-rf","/"]})");
    ASSERT_EQ(log_.entries.size(), 1U);
    EXPECT_NE(log_.entries[0].find("gone before the request was begun"), std::string::npos);
}

TEST_F(RunRequest, BeginsNothingForAnotherPeer) {
    auto peer = peerIdentity(pair_.service.get());
    ASSERT_TRUE(peer);
    ++peer->inode;
    runner_.run(pair_.service.get(), *peer, R"({"command":"rm","arguments":["-rf","/"]})");
    EXPECT_NE(log_.entries.at(0).find("gone before the request was begun"), std::string::npos);
}

TEST_F(RunRequest, RefusesABrokenRequestAndLogsIt) {
    const auto peer = peerIdentity(pair_.service.get());
    ASSERT_TRUE(peer);
    runner_.run(pair_.service.get(), *peer, "{]");
    EXPECT_EQ(pair_.client.readOnce(), "Refused: the request is not JSON, which shows at byte 1.");
    EXPECT_EQ(log_.entries.size(), 1U);
}

}  // namespace
}  // namespace kestrav
