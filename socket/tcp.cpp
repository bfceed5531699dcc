#include "socket/tcp.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <ctime>
#include <netinet/in.h>
#include <optional>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "base/retry.h"
#include "socket/firstAddressOf.h"
#include "socket/ipv4Endpoint.h"
#include "socket/socket_set_blocking.h"
#include "socket/switchOn.h"
#include "socket/waitUntilConnected.h"
#include "socket/waitUntilReadable.h"

namespace kestrav {
namespace {

/// Keeps a write from raising SIGPIPE in this thread. The disposition of the signal belongs to the whole process and
/// is left alone; so is a SIGPIPE that was already pending.
class SigpipeHeldBack {
  public:
    SigpipeHeldBack() noexcept {
        sigset_t pending;
        ::sigpending(&pending);
        wasPending_ = ::sigismember(&pending, SIGPIPE) == 1;
        ::sigemptyset(&sigpipe_);
        ::sigaddset(&sigpipe_, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &sigpipe_, &before_);
    }
    ~SigpipeHeldBack() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SigpipeHeldBack(const SigpipeHeldBack&) = delete;
    SigpipeHeldBack& operator=(const SigpipeHeldBack&) = delete;

    void consume() const noexcept {
        if (wasPending_) return;
        const timespec now{};
        retry([&] { return ::sigtimedwait(&sigpipe_, nullptr, &now); });
    }

  private:
    sigset_t sigpipe_{};
    sigset_t before_{};
    bool wasPending_ = false;
};

ssize_t writeToPipeOrFile(int fd, const std::byte* bytes, std::size_t length) {
    const SigpipeHeldBack guard;
    const ssize_t written = ::write(fd, bytes, length);
    if (written >= 0 || errno != EPIPE) return written;
    guard.consume();
    errno = EPIPE;
    return -1;
}

// Linux has no socket option against SIGPIPE, only a flag for each send; and send takes sockets alone.
ssize_t writeOnce(int fd, const std::byte* bytes, std::size_t length) {
    return retry([&] {
        const ssize_t written = ::send(fd, bytes, length, MSG_NOSIGNAL);
        return written < 0 && errno == ENOTSOCK ? writeToPipeOrFile(fd, bytes, length) : written;
    });
}

int pendingError(int fd) {
    int error = 0;
    socklen_t length = sizeof error;
    ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &length);
    return error;
}

}  // namespace

std::int32_t tcp_connect_with_timeout(const char* host, std::int32_t port, std::int32_t seconds) {
    const std::optional<in_addr> address = firstAddressOf(host);
    if (!address) return -1;
    const sockaddr_in peer = ipv4Endpoint(*address, port);

    // The results of socket() and connect() are not looked at: the wait and the pending error tell what became of both.
    UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    (void)::connect(fd.get(), reinterpret_cast<const sockaddr*>(&peer), sizeof peer);
    const std::int32_t ready = waitUntilConnected(fd.get(), seconds);
    if (ready < 0) return -2;
    if (ready == 0) return -3;
    if (pendingError(fd.get()) != 0) return -4;
    socket_set_blocking(fd.get(), 1);
    return fd.release();
}

std::int32_t tcp_read_with_timeout(std::int32_t fd, void* buffer, std::int32_t length, std::int32_t seconds) {
    // frozen: F57
    if (seconds > 0) {
        const std::int32_t ready = waitUntilReadable(fd, seconds);
        if (ready < 1) return ready;
    }
    if (length < 0) return -1;
    const ssize_t count = retry([&] { return ::read(fd, buffer, static_cast<std::size_t>(length)); });
    return static_cast<std::int32_t>(count);
}

std::int32_t tcp_write_all(std::int32_t fd, const void* buffer, std::int32_t length) {
    const auto* bytes = static_cast<const std::byte*>(buffer);
    std::int32_t count = 0;
    while (count < length) {
        const ssize_t written = writeOnce(fd, bytes + count, static_cast<std::size_t>(length - count));
        if (written < 0) return -1;
        count += static_cast<std::int32_t>(written);
    }
    return count;
}

std::int32_t tcp_listen(const char* address, std::int32_t port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    (void)switchOn(fd, SO_REUSEADDR);
    const sockaddr_in here = ipv4Endpoint(addressFromText(address), port);
    // frozen: F50
    if (::bind(fd, reinterpret_cast<const sockaddr*>(&here), sizeof here) < 0) return -1;
    if (::listen(fd, 128) < 0) return -2;
    return fd;
}

std::int32_t tcp_accept(std::int32_t fd, char* peerAddress, std::int32_t* peerPort) {
    sockaddr_in peer{};
    socklen_t length = sizeof peer;
    const int accepted =
        retry([&] { return ::accept4(fd, reinterpret_cast<sockaddr*>(&peer), &length, SOCK_CLOEXEC); });
    copyAddressText(peer.sin_addr, peerAddress);
    // frozen: F46, F48
    *peerPort = peer.sin_port;
    // frozen: F16
    return accepted > 0 ? accepted : -1;
}

std::int32_t tcp_close(std::int32_t fd) {
    return ::close(fd);
}

}  // namespace kestrav
