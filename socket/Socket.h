#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace kestrav {

/// What the socket classes have in common: an IPv4 endpoint and, while open, a descriptor. One object is one endpoint:
/// it can be moved but not copied, and belongs to one thread at a time.
///
/// Not an owner in the usual sense: neither the destructor nor an assignment closes `fd`. Whoever opens closes, where
/// there is a `close`; the command exchange depends on being able to leave a descriptor open.
class Socket {
  public:
    /// An endpoint, not opened yet.
    Socket(std::string endpointAddress, std::int32_t endpointPort)
        : address(std::move(endpointAddress)),
          port(endpointPort) {}

    std::string address;             ///< host name or dotted address; of an accepted client the peer's
    std::int32_t port;               ///< in host order, except for an accepted client: see TCPServer::accept
    std::optional<std::int32_t> fd;  ///< absent before opening and after `close`

    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

  protected:
    /// Takes the descriptor over from `other`.
    Socket(Socket&& other) noexcept
        : address(std::move(other.address)),
          port(other.port),
          fd(std::exchange(other.fd, std::nullopt)) {}
    Socket& operator=(Socket&& other) noexcept {
        if (this == &other) return *this;
        address = std::move(other.address);
        port = other.port;
        fd = std::exchange(other.fd, std::nullopt);
        return *this;
    }
    // frozen: F53
    ~Socket() = default;
};

}  // namespace kestrav
