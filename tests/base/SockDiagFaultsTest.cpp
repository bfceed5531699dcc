// A kernel that has sock_diag without its part for TCP, as where the module tcp_diag can't be loaded. A running one
// that has it can't be made to lose it, so its answer is put in the place of the real one.

#include <array>
#include <cerrno>
#include <cstring>
#include <gtest/gtest.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include "base/UniqueFd.h"
#include "base/findTcpSocket.h"
#include "tests/socket/Loopback.h"

namespace {

bool lacksTcp = false;

}  // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
ssize_t __real_recv(int fd, void* into, std::size_t size, int flags);

ssize_t __wrap_recv(int fd, void* into, std::size_t size, int flags) {
    const ssize_t got = __real_recv(fd, into, size, flags);
    if (!lacksTcp) return got;
    // An error names itself and repeats the question.
    const std::size_t length = NLMSG_LENGTH(sizeof(nlmsgerr) + sizeof(inet_diag_req_v2));
    nlmsghdr header{};
    header.nlmsg_len = static_cast<__u32>(length);
    header.nlmsg_type = NLMSG_ERROR;
    nlmsgerr error{};
    error.error = -ENOENT;
    std::memset(into, 0, size);
    std::memcpy(into, &header, sizeof header);
    std::memcpy(static_cast<char*>(into) + NLMSG_HDRLEN, &error, sizeof error);
    return static_cast<ssize_t>(length);
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace kestrav {
namespace {

TEST(SockDiagWithoutTcp, LeavesTheTableOfConnections) {
    const UniqueFd listening = listener();
    struct stat status {};
    ASSERT_EQ(::fstat(listening.get(), &status), 0);

    lacksTcp = true;
    const SocketLook look = findListeningSocket(endpointOf(listening.get()));
    lacksTcp = false;
    ASSERT_TRUE(look.socket);
    EXPECT_EQ(look.socket->inode, status.st_ino);
}

}  // namespace
}  // namespace kestrav
