#include <csignal>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "services/commandd/PeerProcess.h"
#include "tests/services/CommandDaemon.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

/// A process of some user's that has made a connection to `listener` and waits for its end.
class Connector {
  public:
    Connector(
        std::uint16_t port, uid_t uid, const std::function<void()>& afterwards = [] {}) {
        int ready[2];
        if (::pipe(ready) != 0) throw std::runtime_error("no pipe");
        pid_ = ::fork();
        if (pid_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (uid != ::getuid() && ::setresuid(uid, uid, uid) != 0) ::_exit(2);
            const Client client(port);
            afterwards();
            if (::write(ready[1], "!", 1) != 1) ::_exit(3);
            ::pause();
            ::_exit(0);
        }
        ::close(ready[1]);
        char byte = 0;
        const bool isReady = ::read(ready[0], &byte, 1) == 1;
        ::close(ready[0]);
        if (!isReady) throw std::runtime_error("no connection");
    }
    ~Connector() { end(); }
    Connector(const Connector&) = delete;
    Connector& operator=(const Connector&) = delete;

    pid_t pid() const { return pid_; }
    void end() {
        if (pid_ <= 0) return;
        signalOne(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

  private:
    pid_t pid_ = -1;
};

class ProcessHolding : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "needs root: looks into other users' processes";
    }
    UniqueFd accept() const { return UniqueFd(::accept(listener_.get(), nullptr, nullptr)); }

    std::uint16_t port_ = 0;
    const UniqueFd listener_ = listenOnFreePort(port_);
};

TEST_F(ProcessHolding, IsTheOneThatConnected) {
    const Connector connector(port_, 65534);
    const UniqueFd service = accept();
    const auto peer = peerIdentity(service.get());
    ASSERT_TRUE(peer);
    EXPECT_EQ(peer->uid, 65534U);
    const auto process = processHolding(*peer);
    ASSERT_TRUE(process) << process.problem().sentence;
    EXPECT_EQ(process.value().pid, connector.pid());
    EXPECT_EQ(process.value().uid, 65534U);
    EXPECT_GT(process.value().startTime, 0U);
}

TEST_F(ProcessHolding, IsToldByItsStartFromALaterOneOfThatNumber) {
    const Connector first(port_, 65534);
    const UniqueFd one = accept();
    ::usleep(30'000);
    const Connector second(port_, 65534);
    const UniqueFd two = accept();
    const auto a = processHolding(*peerIdentity(one.get()));
    const auto b = processHolding(*peerIdentity(two.get()));
    ASSERT_TRUE(a && b);
    EXPECT_LT(a.value().startTime, b.value().startTime);
}

TEST_F(ProcessHolding, IsRefusedWhenTwoShareTheDescriptor) {
    const Connector connector(port_, 65534, [] {
        const pid_t parent = ::getpid();
        if (::fork() == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            // A parent that ended before that call sends no signal any more.
            if (::getppid() != parent) ::_exit(0);
            ::pause();
        }
    });
    const UniqueFd service = accept();
    const auto process = processHolding(*peerIdentity(service.get()));
    ASSERT_FALSE(process);
    EXPECT_EQ(process.problem().sentence, "several processes share the connection, so nobody can tell who asks.");
}

TEST_F(ProcessHolding, IsRefusedWhenTheProcessHasOtherRightsThanTheSocket) {
    const Connector connector(port_, 65534, [] {});
    // Made as root and kept by a process that has become somebody else.
    const Connector changed(port_, 0, [] {
        if (::setresuid(65534, 65534, 65534) != 0) ::_exit(4);
    });
    const UniqueFd first = accept();
    const UniqueFd second = accept();
    const auto process = processHolding(*peerIdentity(second.get()));
    ASSERT_FALSE(process);
    EXPECT_EQ(process.problem().sentence, "the process behind the connection runs with other rights than its user's.");
}

TEST_F(ProcessHolding, IsRefusedWhenNobodyHasTheDescriptorOpen) {
    const Connector connector(port_, 65534, [] {});
    const UniqueFd service = accept();
    const auto peer = peerIdentity(service.get());
    ASSERT_TRUE(peer);
    // The only copy of a descriptor can be on its way through another socket.
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    Client inFlight(port_);
    const UniqueFd other = accept();
    char control[CMSG_SPACE(sizeof(int))] = {};
    char byte = '!';
    iovec part{&byte, 1};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    const int fd = inFlight.socket();
    std::memcpy(CMSG_DATA(header), &fd, sizeof fd);
    ASSERT_EQ(::sendmsg(ends[0], &message, 0), 1);
    inFlight.close();
    const auto orphan = peerIdentity(other.get());
    ASSERT_TRUE(orphan);
    const auto process = processHolding(*orphan);
    ASSERT_FALSE(process);
    EXPECT_EQ(process.problem().sentence, "no process can be found behind the connection.");
    ::close(ends[0]);
    ::close(ends[1]);
}

}  // namespace
}  // namespace kestrav
