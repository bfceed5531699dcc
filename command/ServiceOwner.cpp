#include "command/ServiceOwner.h"

#include <netinet/in.h>
#include <unistd.h>

#include "base/findTcpSocket.h"

namespace kestrav {
namespace {

bool isOurs(uid_t uid) {
    return uid == 0 || uid == ::geteuid();
}

std::optional<uid_t> ownerIn(const SocketLook& look) {
    return look.socket ? std::optional(look.socket->uid) : std::nullopt;
}

}  // namespace

ServiceOwner::ServiceOwner(int connection) : connection_(connection) {
    sockaddr_in local{};
    sockaddr_in remote{};
    if (endsOf(connection, local, remote)) listener_ = ownerIn(findListeningSocket(remote));
}

std::optional<std::string> ServiceOwner::whyNotOurs() const {
    sockaddr_in local{};
    sockaddr_in remote{};
    std::optional<uid_t> answerer;
    if (endsOf(connection_, local, remote)) answerer = ownerIn(findConnectedSocket(remote, local));
    for (const auto& owner : {answerer, listener_}) {
        if (!owner || isOurs(*owner)) continue;
        return "This is not the service's answer: user " + std::to_string(*owner) +
               " listens in its place. Do not believe it.";
    }
    if (answerer || listener_) return std::nullopt;
    return "This may not be the service's answer: the system does not tell who listens in its place. Do not believe "
           "it.";
}

}  // namespace kestrav
