#include <algorithm>
#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <netdb.h>
#include <poll.h>
#include <string>

#include "socket/SocketError.h"
#include "socket/TCPServer.h"
#include "socket/tcp.h"
#include "socket/udp.h"
#include "tests/socket/Loopback.h"

// What the linker puts in place of the system calls of the code under test. Each does the real thing unless told.
namespace {

struct Faults {
    bool listenFails = false;
    bool waitingFails = false;
    int emptySends = 0;           // so many sends return 0
    std::size_t mostPerSend = 0;  // 0: no limit
    int backlog = 0;              // what the last listen asked for
    bool optionsFail = false;
    int interruptedSendTos = 0;      // so many fail with EINTR first
    std::size_t lookUpNeeds = 0;     // a look-up with less room fails
    double longestWait = -1;         // what the calls that wait were given, in seconds
    bool waitingEndsAtOnce = false;  // as if the time were over
};

Faults& faults() {
    static Faults state;
    return state;
}

}  // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
int __real_gethostbyname_r(const char* name, hostent* entry, char* room, std::size_t size, hostent** found,
                           int* reason);
int __real_listen(int fd, int backlog);
int __real_ppoll(pollfd* entries, nfds_t count, const timespec* time, const sigset_t* mask);
ssize_t __real_send(int fd, const void* bytes, std::size_t length, int flags);
ssize_t __real_sendto(int fd, const void* bytes, std::size_t length, int flags, const sockaddr* to, socklen_t size);
int __real_setsockopt(int fd, int level, int name, const void* value, socklen_t size);

int __wrap_gethostbyname_r(const char* name, hostent* entry, char* room, std::size_t size, hostent** found,
                           int* reason) {
    if (size >= faults().lookUpNeeds) return __real_gethostbyname_r(name, entry, room, size, found, reason);
    *found = nullptr;
    return ERANGE;
}

int __wrap_setsockopt(int fd, int level, int name, const void* value, socklen_t size) {
    if (!faults().optionsFail) return __real_setsockopt(fd, level, name, value, size);
    errno = ENOBUFS;
    return -1;
}

ssize_t __wrap_sendto(int fd, const void* bytes, std::size_t length, int flags, const sockaddr* to, socklen_t size) {
    if (faults().interruptedSendTos <= 0) return __real_sendto(fd, bytes, length, flags, to, size);
    --faults().interruptedSendTos;
    errno = EINTR;
    return -1;
}

int __wrap_listen(int fd, int backlog) {
    faults().backlog = backlog;
    if (!faults().listenFails) return __real_listen(fd, backlog);
    errno = EOPNOTSUPP;
    return -1;
}

int __wrap_ppoll(pollfd* entries, nfds_t count, const timespec* time, const sigset_t* mask) {
    const double seconds = static_cast<double>(time->tv_sec) + static_cast<double>(time->tv_nsec) / 1e9;
    faults().longestWait = std::max(faults().longestWait, seconds);
    if (faults().waitingEndsAtOnce) return 0;
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

TEST_F(Faulty, ListenGoesOnWithoutTheOptionToReuseTheAddress) {
    faults().optionsFail = true;
    const UniqueFd fd(tcp_listen("127.0.0.1", 0));
    EXPECT_GT(fd.get(), 0);
    EXPECT_EQ(option(fd.get(), SO_ACCEPTCONN), 1);
}

TEST_F(Faulty, UdpServerLeavesItsDescriptorOpenWhenTheOptionFails) {
    faults().optionsFail = true;
    const std::size_t before = openDescriptors();
    EXPECT_EQ(udp_server_bind("", 0), -1);
    EXPECT_EQ(openDescriptors(), before + 1);
    EXPECT_EQ(udp_server_bind("127.0.0.1", 0), -1);
    EXPECT_EQ(openDescriptors(), before + 2);
}

TEST_F(Faulty, UdpClientGoesOnWithoutTheOption) {
    faults().optionsFail = true;
    const UniqueFd fd(udp_client_open());
    EXPECT_GT(fd.get(), 0);
}

TEST_F(Faulty, DatagramsAreSentAgainAfterAnInterruption) {
    const UniqueFd peer = boundSocket(SOCK_DGRAM);
    const UniqueFd fd(udp_client_open());
    faults().interruptedSendTos = 3;
    EXPECT_EQ(udp_send_to(fd.get(), "x", 1, "127.0.0.1", portOf(peer.get())), 1);
    EXPECT_EQ(faults().interruptedSendTos, 0);
}

TEST_F(Faulty, ALookUpIsMadeAgainWithMoreRoom) {
    faults().lookUpNeeds = 100'000;
    std::array<char, 16> address{};
    EXPECT_EQ(udp_resolve_host("localhost", address.data()), 0);
    EXPECT_STREQ(address.data(), "127.0.0.1");
}

TEST_F(Faulty, ALookUpEndsSomeTime) {
    faults().lookUpNeeds = std::size_t{1} << 40U;
    std::array<char, 16> address{};
    EXPECT_EQ(udp_resolve_host("localhost", address.data()), -1);
    EXPECT_EQ(address[0], '\0');
}

// Long ones, too, are asked of the system whole. The reading of the clock and the call that waits are a moment apart,
// which a busy machine may draw out: the longest of many is the one.
TEST_F(Faulty, WaitsAsLongAsItIsTold) {
    const auto [here, there] = connectedPair();
    const FullListener full;
    faults().waitingEndsAtOnce = true;
    for (const std::int32_t seconds : {1, 2, 3, 60, 86400}) {
        faults().longestWait = -1;
        char byte = 0;
        for (int i = 0; i < 20; ++i)
            EXPECT_EQ(tcp_read_with_timeout(here.get(), &byte, 1, seconds), 0);
        EXPECT_GT(faults().longestWait, seconds - 0.5);
        EXPECT_LE(faults().longestWait, seconds);
        faults().longestWait = -1;
        for (int i = 0; i < 20; ++i)
            EXPECT_EQ(tcp_connect_with_timeout("127.0.0.1", full.port(), seconds), -3);
        EXPECT_GT(faults().longestWait, seconds - 0.5);
        EXPECT_LE(faults().longestWait, seconds);
    }
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
