#include "tests/command/LoopbackService.h"

#include <arpa/inet.h>
#include <array>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace kestrav {
namespace {

/// Notices the end of the first JSON object in a stream of bytes.
class ObjectEnd {
  public:
    bool reachedBy(char byte) {
        if (std::exchange(escaped_, false)) return false;
        if (inText_) {
            escaped_ = byte == '\\';
            inText_ = byte != '"';
            return false;
        }
        inText_ = byte == '"';
        if (byte == '{') ++depth_;
        return byte == '}' && --depth_ == 0;
    }

  private:
    int depth_ = 0;
    bool inText_ = false;
    bool escaped_ = false;
};

UniqueFd listenOn(std::uint16_t port) {
    UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int on = 1;
    ::setsockopt(fd.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in here{};
    here.sin_family = AF_INET;
    here.sin_port = htons(port);
    here.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(fd.get(), reinterpret_cast<const sockaddr*>(&here), sizeof here) != 0 || ::listen(fd.get(), 128) != 0)
        throw std::runtime_error("LoopbackService: cannot listen on port " + std::to_string(port));
    return fd;
}

std::int32_t portOf(int fd) {
    sockaddr_in here{};
    socklen_t length = sizeof here;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&here), &length);
    return ntohs(here.sin_port);
}

/// Whether `fd` has something to read before `stop` has and before the time is over.
bool readableBefore(int fd, int stop, int milliseconds) {
    std::array<pollfd, 2> entries{pollfd{fd, POLLIN, 0}, pollfd{stop, POLLIN, 0}};
    ::poll(entries.data(), entries.size(), milliseconds);
    return entries[1].revents == 0 && entries[0].revents != 0;
}

}  // namespace

bool LoopbackConnection::readable(int milliseconds) {
    return readableBefore(fd_, stop_, milliseconds);
}

std::string LoopbackConnection::receiveRequest() {
    std::string request;
    ObjectEnd end;
    std::array<char, 65536> buffer{};
    while (readable(-1)) {
        const ssize_t count = ::recv(fd_, buffer.data(), buffer.size(), 0);
        if (count <= 0) break;
        bool complete = false;
        for (ssize_t i = 0; i < count; ++i)
            complete = end.reachedBy(buffer[static_cast<std::size_t>(i)]) || complete;
        request.append(buffer.data(), static_cast<std::size_t>(count));
        if (complete) break;
    }
    record_(request);
    return request;
}

void LoopbackConnection::receiveFirstByte() {
    char byte = 0;
    if (readable(-1)) (void)!::recv(fd_, &byte, 1, 0);
}

void LoopbackConnection::send(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) return;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

void LoopbackConnection::pause(std::chrono::milliseconds time) {
    pollfd entry{stop_, POLLIN, 0};
    ::poll(&entry, 1, static_cast<int>(time.count()));
}

void LoopbackConnection::waitUntilPeerCloses() {
    std::array<char, 4096> ignored{};
    while (readable(-1) && ::recv(fd_, ignored.data(), ignored.size(), 0) > 0) {
    }
}

void LoopbackConnection::resetOnClose() {
    const linger atOnce{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(fd_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

LoopbackBehaviour answers(std::string text) {
    return [text = std::move(text)](LoopbackConnection& connection) {
        connection.receiveRequest();
        connection.send(text);
    };
}

LoopbackBehaviour answersInPieces(std::vector<std::string> pieces, std::chrono::milliseconds pause) {
    return [pieces = std::move(pieces), pause](LoopbackConnection& connection) {
        connection.receiveRequest();
        for (const std::string& piece : pieces) {
            connection.send(piece);
            connection.pause(pause);
        }
    };
}

LoopbackBehaviour neverAnswers() {
    return [](LoopbackConnection& connection) {
        connection.receiveRequest();
        connection.waitUntilPeerCloses();
    };
}

LoopbackBehaviour closesAtOnce() {
    return [](LoopbackConnection&) {};
}

LoopbackBehaviour resetsInMidRequest() {
    return [](LoopbackConnection& connection) {
        connection.receiveFirstByte();
        connection.resetOnClose();
    };
}

LoopbackService::LoopbackService(LoopbackBehaviour behaviour, std::uint16_t port)
    : listener_(listenOn(port)),
      stop_(::eventfd(0, EFD_CLOEXEC)),
      port_(portOf(listener_.get())),
      behaviour_(std::move(behaviour)),
      acceptor_([this] { acceptConnections(); }) {}

LoopbackService::~LoopbackService() {
    ::eventfd_write(stop_.get(), 1);
    acceptor_.join();
    for (std::thread& connection : connections_)
        connection.join();
}

void LoopbackService::setBehaviour(LoopbackBehaviour behaviour) {
    const std::lock_guard lock(mutex_);
    behaviour_ = std::move(behaviour);
}

std::vector<std::string> LoopbackService::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::vector<std::string> LoopbackService::waitForRequests(std::size_t count) const {
    std::unique_lock lock(mutex_);
    recorded_.wait_for(lock, std::chrono::seconds(60), [&] { return requests_.size() >= count; });
    return requests_;
}

void LoopbackService::acceptConnections() {
    while (readableBefore(listener_.get(), stop_.get(), -1)) {
        UniqueFd connection(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!connection) continue;
        connections_.emplace_back([this, owned = std::move(connection)] { serve(owned); });
    }
}

void LoopbackService::serve(const UniqueFd& connection) {
    LoopbackBehaviour behaviour;
    {
        const std::lock_guard lock(mutex_);
        behaviour = behaviour_;
    }
    LoopbackConnection peer(connection.get(), stop_.get(), [this](const std::string& request) { record(request); });
    behaviour(peer);
}

void LoopbackService::record(const std::string& request) {
    const std::lock_guard lock(mutex_);
    requests_.push_back(request);
    recorded_.notify_all();
}

}  // namespace kestrav
