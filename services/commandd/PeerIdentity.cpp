#include "services/commandd/PeerIdentity.h"

#include <array>
#include <cstring>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>

#include "base/UniqueFd.h"

namespace kestrav {
namespace {

struct Question {
    nlmsghdr header;
    inet_diag_req_v2 request;
};

bool addressesOf(int connection, sockaddr_in& ours, sockaddr_in& peers) {
    socklen_t length = sizeof ours;
    if (::getsockname(connection, reinterpret_cast<sockaddr*>(&ours), &length) != 0) return false;
    length = sizeof peers;
    if (::getpeername(connection, reinterpret_cast<sockaddr*>(&peers), &length) != 0) return false;
    return ours.sin_family == AF_INET && peers.sin_family == AF_INET;
}

Question questionAbout(const sockaddr_in& ours, const sockaddr_in& peers) {
    Question question{};
    question.header.nlmsg_len = sizeof question;
    question.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    question.header.nlmsg_flags = NLM_F_REQUEST;  // one socket, not a dump
    question.request.sdiag_family = AF_INET;
    question.request.sdiag_protocol = IPPROTO_TCP;
    question.request.idiag_states = ~0U;
    inet_diag_sockid& id = question.request.id;
    id.idiag_sport = peers.sin_port;
    id.idiag_dport = ours.sin_port;
    id.idiag_src[0] = peers.sin_addr.s_addr;
    id.idiag_dst[0] = ours.sin_addr.s_addr;
    id.idiag_cookie[0] = INET_DIAG_NOCOOKIE;
    id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;
    return question;
}

/// Where the connection is gone, the kernel may show another socket that listens on the peer's port.
bool isTheConnection(const inet_diag_msg& found, const inet_diag_sockid& asked) {
    const inet_diag_sockid& id = found.id;
    const bool sameEnds = id.idiag_sport == asked.idiag_sport && id.idiag_dport == asked.idiag_dport &&
                          id.idiag_src[0] == asked.idiag_src[0] && id.idiag_dst[0] == asked.idiag_dst[0];
    // A peer that has closed its sending side still waits for the answer.
    const bool alive = found.idiag_state == TCP_ESTABLISHED || found.idiag_state == TCP_FIN_WAIT1 ||
                       found.idiag_state == TCP_FIN_WAIT2;
    return found.idiag_family == AF_INET && sameEnds && alive;
}

}  // namespace

std::optional<PeerIdentity> peerIdentity(int connection) {
    sockaddr_in ours{};
    sockaddr_in peers{};
    if (!addressesOf(connection, ours, peers)) return std::nullopt;
    const UniqueFd kernel(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
    if (!kernel) return std::nullopt;
    const timeval patience{1, 0};  // it answers within the call; this is for a kernel that doesn't
    ::setsockopt(kernel.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    const Question question = questionAbout(ours, peers);
    if (::send(kernel.get(), &question, sizeof question, MSG_NOSIGNAL) != sizeof question) return std::nullopt;

    alignas(nlmsghdr) std::array<char, 8192> answer{};
    const ssize_t got = ::recv(kernel.get(), answer.data(), answer.size(), 0);
    nlmsghdr header{};
    inet_diag_msg found{};
    if (got < static_cast<ssize_t>(NLMSG_LENGTH(sizeof found))) return std::nullopt;
    std::memcpy(&header, answer.data(), sizeof header);
    if (header.nlmsg_type != SOCK_DIAG_BY_FAMILY) return std::nullopt;
    std::memcpy(&found, answer.data() + NLMSG_HDRLEN, sizeof found);
    if (!isTheConnection(found, question.request.id) || found.idiag_inode == 0) return std::nullopt;
    return PeerIdentity{found.idiag_uid, found.idiag_inode};
}

}  // namespace kestrav
