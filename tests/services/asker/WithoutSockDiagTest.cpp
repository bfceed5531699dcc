// A kernel without sock_diag, or without its part for TCP: what it would say is put in its place in a process of its
// own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "services/asker/PeerIdentity.h"
#include "tests/base/lesserKernel.h"
#include "tests/services/CommandDaemon.h"

namespace kestrav {
namespace {

std::string foundOrNot(int connection) {
    const auto identity = peerIdentity(connection);
    if (!identity) return identity.problem().sentence;
    return std::to_string(identity.value().uid) + " " + std::to_string(identity.value().inode);
}

class WithoutSockDiag : public testing::Test {
  protected:
    std::uint16_t port_ = 0;
    const UniqueFd listener_ = listenOnFreePort(port_);
    Client client_{port_};
    const UniqueFd service_{::accept(listener_.get(), nullptr, nullptr)};
};

TEST_F(WithoutSockDiag, ThePeerIsFoundInTheTableOfConnections) {
    struct stat status {};
    ASSERT_EQ(::fstat(client_.socket(), &status), 0);
    EXPECT_EQ(inAProcess([&] {
                  loseSockDiag();
                  return foundOrNot(service_.get());
              }),
              std::to_string(::geteuid()) + " " + std::to_string(status.st_ino));
}

TEST_F(WithoutSockDiag, APeerThatEndsItsSendingIsStillThere) {
    client_.finishSending();
    const std::string found = foundOrNot(service_.get());
    EXPECT_EQ(inAProcess([&] {
                  loseSockDiag();
                  return foundOrNot(service_.get());
              }),
              found);
}

TEST_F(WithoutSockDiag, APeerThatHasClosedIsGone) {
    client_.close();
    EXPECT_EQ(inAProcess([&] {
                  loseSockDiag();
                  return foundOrNot(service_.get());
              }),
              "the other end of the connection is gone.");
}

TEST_F(WithoutSockDiag, AndWithoutTheTableTheSentenceSaysWhatIsMissing) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: mounts";
    EXPECT_EQ(inAProcess([&] {
                  loseProc();
                  loseSockDiag();
                  return foundOrNot(service_.get());
              }),
              "the system does not tell who is asking: neither sock_diag nor /proc/net/tcp can be read.");
}

TEST_F(WithoutSockDiag, TheServiceServesRootAndJudgesOthers) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: asks as another user";
    EXPECT_EQ(inAProcess([] {
                  loseSockDiag();
                  const CommandDaemon daemon;
                  return ask(daemon.port(), "rm", {});
              }),
              "Refused: \"rm\" is not a command of this service.");
    EXPECT_THAT(inAProcess([] {
                    loseSockDiag();
                    const CommandDaemon daemon;
                    return inAProcess([&daemon] {
                        if (::setresuid(65534, 65534, 65534) != 0) ::_exit(7);
                        return ask(daemon.port(), "umount", {"/dev/sdzzs1"});
                    });
                }),
                testing::StartsWith("Refused: the authorization service (polkit) "));
}

}  // namespace
}  // namespace kestrav
