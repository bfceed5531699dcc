#pragma once

#include <arpa/inet.h>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <netinet/in.h>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "base/UniqueFd.h"

namespace kestrav {

using Clock = std::chrono::steady_clock;

inline double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

inline std::size_t openDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

inline bool isOpen(int fd) {
    return ::fcntl(fd, F_GETFD) != -1;
}

inline int option(int fd, int name) {
    int value = -1;
    socklen_t length = sizeof value;
    ::getsockopt(fd, SOL_SOCKET, name, &value, &length);
    return value;
}

inline sockaddr_in endpointOf(int fd) {
    sockaddr_in here{};
    socklen_t length = sizeof here;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&here), &length);
    return here;
}

inline std::int32_t portOf(int fd) {
    return ntohs(endpointOf(fd).sin_port);
}

/// A socket of `type` bound to a dotted address; port 0 lets the system choose.
inline UniqueFd boundSocket(int type, const char* address = "127.0.0.1", std::uint16_t port = 0) {
    UniqueFd fd(::socket(AF_INET, type | SOCK_CLOEXEC, 0));
    sockaddr_in here{};
    here.sin_family = AF_INET;
    here.sin_port = htons(port);
    here.sin_addr.s_addr = ::inet_addr(address);
    EXPECT_EQ(::bind(fd.get(), reinterpret_cast<const sockaddr*>(&here), sizeof here), 0) << std::strerror(errno);
    return fd;
}

inline UniqueFd listener(int backlog = 16) {
    UniqueFd fd = boundSocket(SOCK_STREAM);
    EXPECT_EQ(::listen(fd.get(), backlog), 0);
    return fd;
}

inline int connectTo(int fd, std::int32_t port) {
    sockaddr_in peer{};
    peer.sin_family = AF_INET;
    peer.sin_port = htons(static_cast<std::uint16_t>(port));
    peer.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::connect(fd, reinterpret_cast<const sockaddr*>(&peer), sizeof peer);
}

/// Two ends of one TCP connection.
inline std::pair<UniqueFd, UniqueFd> connectedPair() {
    const UniqueFd server = listener();
    UniqueFd client(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(connectTo(client.get(), portOf(server.get())), 0);
    return {std::move(client), UniqueFd(::accept4(server.get(), nullptr, nullptr, SOCK_CLOEXEC))};
}

/// A listener whose queue is full: further connections are neither accepted nor refused.
class FullListener {
  public:
    FullListener() : listener_(listener(0)) {
        while (occupyOnePlace()) {
        }
    }
    std::int32_t port() const { return portOf(listener_.get()); }
    int fd() const { return listener_.get(); }

  private:
    bool occupyOnePlace() {
        UniqueFd client(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const timeval patience{.tv_sec = 0, .tv_usec = 100000};
        ::setsockopt(client.get(), SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        if (connectTo(client.get(), port()) != 0) return false;
        clients_.push_back(std::move(client));
        return true;
    }

    UniqueFd listener_;
    std::vector<UniqueFd> clients_;
};

/// Sets the number of descriptors that the process may have, for the life of this object.
class DescriptorLimit {
  public:
    explicit DescriptorLimit(rlim_t limit) {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit wanted{.rlim_cur = limit, .rlim_max = before_.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_NOFILE, &wanted), 0) << std::strerror(errno);
    }
    ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &before_); }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

  private:
    rlimit before_{};
};

/// Descriptor 0 is free for the life of this object: the next one opened is it. Closes what has taken it by then.
class DescriptorZeroFree {
  public:
    DescriptorZeroFree() : before_(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)) { ::close(STDIN_FILENO); }
    ~DescriptorZeroFree() {
        if (before_) ::dup2(before_.get(), STDIN_FILENO);
    }
    DescriptorZeroFree(const DescriptorZeroFree&) = delete;
    DescriptorZeroFree& operator=(const DescriptorZeroFree&) = delete;

  private:
    UniqueFd before_;
};

/// Every descriptor below `end` is taken for the life of this object: the next one opened is `end`.
class DescriptorsTaken {
  public:
    explicit DescriptorsTaken(int end) {
        for (int fd = ::dup(STDIN_FILENO); fd >= 0; fd = ::dup(STDIN_FILENO)) {
            if (fd >= end) {
                ::close(fd);
                return;
            }
            taken_.emplace_back(fd);
        }
    }

  private:
    std::vector<UniqueFd> taken_;
};

}  // namespace kestrav
