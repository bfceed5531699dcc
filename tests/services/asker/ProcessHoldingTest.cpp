#include <array>
#include <csignal>
#include <cstring>
#include <future>
#include <gtest/gtest.h>
#include <sched.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "services/asker/SocketAsker.h"
#include "services/asker/processHolding.h"
#include "tests/sandbox/ChildProcess.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/asker/Connector.h"

namespace kestrav {
namespace {

void sendDescriptor(int socket, int descriptor) {
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
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
    if (::sendmsg(socket, &message, 0) != 1) throw std::runtime_error("the descriptor was not sent");
}

/// A child that has the connection in one thread only, whose descriptors are its own.
void shareWithAThread(Client& client) {
    int ready[2];
    if (::pipe(ready) != 0) ::_exit(5);
    const pid_t parent = ::getpid();
    if (::fork() != 0) {
        char byte = 0;
        if (::read(ready[0], &byte, 1) != 1) ::_exit(6);
        return;
    }
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(0);
    std::promise<void> hasItsOwn;
    std::thread keeper([&] {
        if (::unshare(CLONE_FILES) != 0) ::_exit(7);
        hasItsOwn.set_value();
        ::pause();
    });
    hasItsOwn.get_future().wait();
    client.close();
    if (::write(ready[1], "!", 1) != 1) ::_exit(8);
    keeper.join();
}

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
    EXPECT_EQ(peer.value().uid, 65534U);
    const auto process = processHolding(peer.value());
    ASSERT_TRUE(process) << process.problem().sentence;
    EXPECT_EQ(process.value().pid, connector.pid());
    EXPECT_EQ(process.value().uid, 65534U);
    EXPECT_GT(process.value().startTime, 0U);
}

TEST_F(ProcessHolding, IsNoneOfTheServicesOwn) {
    const Connector connector(port_, 65534);
    const Connector other(port_, 65534);
    const UniqueFd service = accept();
    const auto peer = peerIdentity(service.get());
    ASSERT_TRUE(peer);
    EXPECT_TRUE(processHolding(peer.value(), std::array{other.pid()}));
    const auto process = processHolding(peer.value(), std::array{other.pid(), connector.pid()});
    ASSERT_FALSE(process);
    EXPECT_EQ(process.problem().sentence, "no process can be found behind the connection.");
}

TEST_F(ProcessHolding, IsToldByItsStartFromALaterOneOfThatNumber) {
    const Connector first(port_, 65534);
    const UniqueFd one = accept();
    ::usleep(30'000);
    const Connector second(port_, 65534);
    const UniqueFd two = accept();
    const auto a = processHolding(peerIdentity(one.get()).value());
    const auto b = processHolding(peerIdentity(two.get()).value());
    ASSERT_TRUE(a && b);
    EXPECT_LT(a.value().startTime, b.value().startTime);
}

TEST_F(ProcessHolding, IsRefusedWhenTwoShareTheDescriptor) {
    const Connector connector(port_, 65534, [](Client&) {
        const pid_t parent = ::getpid();
        if (::fork() == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            // A parent that ended before that call sends no signal any more.
            if (::getppid() != parent) ::_exit(0);
            ::pause();
        }
    });
    const UniqueFd service = accept();
    const auto process = processHolding(peerIdentity(service.get()).value());
    ASSERT_FALSE(process);
    EXPECT_EQ(process.problem().sentence, "several processes share the connection, so nobody can tell who asks.");
}

TEST_F(ProcessHolding, IsRefusedWhenTheProcessHasOtherRightsThanTheSocket) {
    const Connector connector(port_, 65534);
    // Made as root and kept by a process that has become somebody else.
    const Connector changed(port_, 0, [](Client&) {
        if (::setresuid(65534, 65534, 65534) != 0) ::_exit(4);
    });
    const UniqueFd first = accept();
    const UniqueFd second = accept();
    const auto process = processHolding(peerIdentity(second.get()).value());
    ASSERT_FALSE(process);
    EXPECT_EQ(process.problem().sentence, "the process behind the connection runs with other rights than its user's.");
}

TEST_F(ProcessHolding, IsAnotherOnceTheConnectionWasPassedOn) {
    Client client(port_);
    const UniqueFd service = accept();
    SocketAsker asker(service.get(), peerIdentity(service.get()).value());
    const auto subject = asker.subject();
    ASSERT_TRUE(subject);
    ASSERT_TRUE(asker.couldDoItself(subject.value()));
    const ChildProcess heir(::fork());
    if (heir.pid() == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::pause();
        ::_exit(0);
    }
    client.close();
    const auto passed = asker.couldDoItself(subject.value());
    ASSERT_FALSE(passed);
    EXPECT_EQ(passed.problem().sentence, "the connection passed to another process.");
}

TEST_F(ProcessHolding, IsRefusedWhenNobodyHasTheDescriptorOpen) {
    const Connector connector(port_, 65534);
    const UniqueFd service = accept();
    const auto peer = peerIdentity(service.get());
    ASSERT_TRUE(peer);
    // The only copy of a descriptor can be on its way through another socket.
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    Client inFlight(port_);
    const UniqueFd other = accept();
    sendDescriptor(ends[0], inFlight.socket());
    inFlight.close();
    const auto orphan = peerIdentity(other.get());
    ASSERT_TRUE(orphan);
    const auto process = processHolding(orphan.value());
    ASSERT_FALSE(process);
    EXPECT_EQ(process.problem().sentence, "no process can be found behind the connection.");
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(ProcessHolding, IsRefusedWhenAThreadWithDescriptorsOfItsOwnSharesTheConnection) {
    const Connector connector(port_, 65534, shareWithAThread);
    const UniqueFd service = accept();
    const auto process = processHolding(peerIdentity(service.get()).value());
    ASSERT_FALSE(process);
    EXPECT_EQ(process.problem().sentence, "several processes share the connection, so nobody can tell who asks.");
}

TEST_F(ProcessHolding, IsRefusedWhileACopyOfTheDescriptorWaitsInTheProcesssOwnSocket) {
    const Connector connector(port_, 65534, [](Client& client) {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) ::_exit(5);
        sendDescriptor(ends[0], client.socket());
    });
    const UniqueFd service = accept();
    const auto process = processHolding(peerIdentity(service.get()).value());
    ASSERT_FALSE(process);
    EXPECT_EQ(process.problem().sentence,
              "the process behind the connection has descriptors under way, so nobody can tell who asks.");
}

TEST_F(ProcessHolding, IsTheOneThatConnectedWhateverElseItsThreadsAndSocketsDo) {
    const Connector connector(port_, 65534, [](Client&) {
        int ends[2];
        if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0 || ::write(ends[0], "!", 1) != 1) ::_exit(5);
        for (int i = 0; i < 20; ++i)
            std::thread([] { ::pause(); }).detach();
    });
    const UniqueFd service = accept();
    const auto process = processHolding(peerIdentity(service.get()).value());
    ASSERT_TRUE(process) << process.problem().sentence;
    EXPECT_EQ(process.value().pid, connector.pid());
}

}  // namespace
}  // namespace kestrav
