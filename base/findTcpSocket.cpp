#include "base/findTcpSocket.h"

#include <arpa/inet.h>
#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/tcp.h>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>

#include "base/TcpTableLine.h"
#include "base/UniqueFd.h"

namespace kestrav {
namespace {

struct Question {
    nlmsghdr header;
    inet_diag_req_v2 request;
};

Question questionAbout(const sockaddr_in& local, const sockaddr_in& remote) {
    Question question{};
    question.header.nlmsg_len = sizeof question;
    question.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    question.header.nlmsg_flags = NLM_F_REQUEST;  // one socket, not a dump
    question.request.sdiag_family = AF_INET;
    question.request.sdiag_protocol = IPPROTO_TCP;
    question.request.idiag_states = ~0U;
    inet_diag_sockid& id = question.request.id;
    id.idiag_sport = local.sin_port;
    id.idiag_dport = remote.sin_port;
    id.idiag_src[0] = local.sin_addr.s_addr;
    id.idiag_dst[0] = remote.sin_addr.s_addr;
    id.idiag_cookie[0] = INET_DIAG_NOCOOKIE;
    id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;
    return question;
}

/// Nothing when sock_diag or its part for TCP is missing. The error for that is the one for a socket that isn't there.
std::optional<inet_diag_msg> askKernel(const Question& question) {
    const UniqueFd kernel(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
    if (!kernel) return std::nullopt;
    const timeval patience{1, 0};  // it answers within the call; this is for a kernel that doesn't
    ::setsockopt(kernel.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    if (::send(kernel.get(), &question, sizeof question, MSG_NOSIGNAL) != sizeof question) return std::nullopt;

    alignas(nlmsghdr) std::array<char, 8192> answer{};
    const ssize_t got = ::recv(kernel.get(), answer.data(), answer.size(), 0);
    nlmsghdr header{};
    inet_diag_msg found{};
    if (got < static_cast<ssize_t>(NLMSG_LENGTH(sizeof found))) return std::nullopt;
    std::memcpy(&header, answer.data(), sizeof header);
    if (header.nlmsg_type != SOCK_DIAG_BY_FAMILY) return std::nullopt;
    std::memcpy(&found, answer.data() + NLMSG_HDRLEN, sizeof found);
    return found;
}

// A peer that has closed its sending side still waits for the answer.
bool isConnected(unsigned state) {
    return state == TCP_ESTABLISHED || state == TCP_FIN_WAIT1 || state == TCP_FIN_WAIT2;
}

/// Where the connection is gone, the kernel may show another socket that listens on the same port.
bool isTheConnection(const inet_diag_msg& found, const inet_diag_sockid& asked) {
    const inet_diag_sockid& id = found.id;
    const bool sameEnds = id.idiag_sport == asked.idiag_sport && id.idiag_dport == asked.idiag_dport &&
                          id.idiag_src[0] == asked.idiag_src[0] && id.idiag_dst[0] == asked.idiag_dst[0];
    return found.idiag_family == AF_INET && sameEnds && isConnected(found.idiag_state);
}

SocketLook lookOf(const inet_diag_msg& found, bool isTheOne) {
    // A socket that belongs to no process any more shows user 0 and inode 0.
    if (!isTheOne || found.idiag_inode == 0) return {true, {}};
    return {true, TcpSocket{found.idiag_uid, found.idiag_inode}};
}

/// As /proc/net/tcp writes an end of a connection: the address as the number that it is in memory, the port as a
/// number.
std::string writtenEnd(in_addr_t address, in_port_t port) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%08X:%04X", address, ntohs(port));
    return text.data();
}

/// The first socket of the table that some process has open and that `isTheOne` takes.
template <class IsTheOne>
SocketLook lookInProc(IsTheOne isTheOne) {
    std::ifstream table("/proc/net/tcp");
    std::string line;
    if (!std::getline(table, line)) return {};  // the names of the columns
    while (std::getline(table, line)) {
        const auto socket = TcpTableLine::parse(line);
        if (socket && socket->inode != 0 && isTheOne(*socket)) return {true, TcpSocket{socket->uid, socket->inode}};
    }
    return {true, {}};
}

}  // namespace

SocketLook findConnectedSocket(const sockaddr_in& local, const sockaddr_in& remote) {
    const Question question = questionAbout(local, remote);
    if (const auto found = askKernel(question)) return lookOf(*found, isTheConnection(*found, question.request.id));
    const std::string wantedLocal = writtenEnd(local.sin_addr.s_addr, local.sin_port);
    const std::string wantedRemote = writtenEnd(remote.sin_addr.s_addr, remote.sin_port);
    return lookInProc([&](const TcpTableLine& socket) {
        return socket.local == wantedLocal && socket.remote == wantedRemote && isConnected(socket.state);
    });
}

SocketLook findListeningSocket(const sockaddr_in& local) {
    if (const auto found = askKernel(questionAbout(local, sockaddr_in{})))
        return lookOf(*found, found->idiag_state == TCP_LISTEN && found->id.idiag_sport == local.sin_port);
    const std::string there = writtenEnd(local.sin_addr.s_addr, local.sin_port);
    const std::string everywhere = writtenEnd(INADDR_ANY, local.sin_port);
    return lookInProc([&](const TcpTableLine& socket) {
        return (socket.local == there || socket.local == everywhere) && socket.state == TCP_LISTEN;
    });
}

bool endsOf(int connection, sockaddr_in& local, sockaddr_in& remote) {
    socklen_t length = sizeof local;
    if (::getsockname(connection, reinterpret_cast<sockaddr*>(&local), &length) != 0) return false;
    length = sizeof remote;
    if (::getpeername(connection, reinterpret_cast<sockaddr*>(&remote), &length) != 0) return false;
    return local.sin_family == AF_INET && remote.sin_family == AF_INET;
}

}  // namespace kestrav
