#include <algorithm>
#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>

#include "socket/SocketError.h"
#include "socket/TCPServer.h"
#include "socket/tcp.h"
#include "tests/socket/Loopback.h"

// What the linker puts in place of the system calls of the code under test. Each does the real thing unless told.
namespace {

struct Faults {
    bool listenFails = false;
    bool waitingFails = false;
    int emptySends = 0;           // so many sends return 0
    std::size_t mostPerSend = 0;  // 0: no limit
    int backlog = 0;              // what the last listen asked for
};

Faults& faults() {
    static Faults state;
    return state;
}

}  // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
int __real_listen(int fd, int backlog);
int __real_ppoll(pollfd* entries, nfds_t count, const timespec* time, const sigset_t* mask);
ssize_t __real_send(int fd, const void* bytes, std::size_t length, int flags);

int __wrap_listen(int fd, int backlog) {
    faults().backlog = backlog;
    if (!faults().listenFails) return __real_listen(fd, backlog);
    errno = EOPNOTSUPP;
    return -1;
}

int __wrap_ppoll(pollfd* entries, nfds_t count, const timespec* time, const sigset_t* mask) {
    if (!faults().waitingFails) return __real_ppoll(entries, count, time, mask);
    errno = ENOMEM;
    return -1;
}

ssize_t __wrap_send(int fd, const void* bytes, std::size_t length, int flags) {
    if (faults().emptySends-- > 0) return 0;
    const std::size_t most = faults().mostPerSend == 0 ? length : faults().mostPerSend;
    return __real_send(fd, bytes, std::min(length, most), flags);
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace kestrav {
namespace {

class Faulty : public ::testing::Test {
  protected:
    void SetUp() override { faults() = {}; }
    void TearDown() override { faults() = {}; }
};

TEST_F(Faulty, WriteGoesOnAfterAWriteOfNothing) {
    const auto [here, there] = connectedPair();
    faults().emptySends = 3;
    faults().mostPerSend = 2;
    EXPECT_EQ(tcp_write_all(here.get(), "hello", 5), 5);
    std::array<char, 6> text{};
    EXPECT_EQ(::recv(there.get(), text.data(), 5, MSG_WAITALL), 5);
    EXPECT_STREQ(text.data(), "hello");
}

TEST_F(Faulty, ListenFailsAndLeavesTheDescriptorOpen) {
    faults().listenFails = true;
    const std::size_t before = openDescriptors();
    EXPECT_EQ(tcp_listen("127.0.0.1", 0), -2);
    EXPECT_EQ(openDescriptors(), before + 1);
}

TEST_F(Faulty, ServerRaisesUnknownErrorWhenListenFails) {
    faults().listenFails = true;
    TCPServer server("127.0.0.1", 0);
    try {
        server.listen();
        FAIL() << "listened";
    } catch (const SocketException& exception) {
        EXPECT_EQ(exception.error(), SocketError::unknownError);
    }
    EXPECT_FALSE(server.fd);
}

TEST_F(Faulty, ListenAsksForABacklogOf128) {
    const UniqueFd fd(tcp_listen("127.0.0.1", 0));
    EXPECT_EQ(faults().backlog, 128);
}

TEST_F(Faulty, ConnectClosesItsSocketWhenWaitingFails) {
    const UniqueFd server = listener();
    const std::size_t before = openDescriptors();
    faults().waitingFails = true;
    EXPECT_EQ(tcp_connect_with_timeout("127.0.0.1", portOf(server.get()), 10), -2);
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(Faulty, ReadFailsWhenWaitingFails) {
    const auto [here, there] = connectedPair();
    ::send(there.get(), "x", 1, 0);
    faults().waitingFails = true;
    char byte = 'k';
    EXPECT_EQ(tcp_read_with_timeout(here.get(), &byte, 1, 10), -1);
    EXPECT_EQ(byte, 'k');
}

}  // namespace
}  // namespace kestrav
