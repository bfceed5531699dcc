#pragma once

#include <exception>

namespace kestrav {

/// Why an operation of a socket class failed.
enum class SocketError {
    queryFailed,        ///< the host could not be looked up
    connectionClosed,   ///< there is no open socket, or waiting for the connection failed
    connectionTimeout,  ///< no connection within the time-out
    unknownError,       ///< refused, not all bytes sent, or an address that can't be listened on
};

/// One sentence for a person, beginning with the type and the case. Lives as long as the program.
const char* description(SocketError error) noexcept;

/// What the socket classes throw. Carries the case alone.
class SocketException : public std::exception {
  public:
    /// Raised for that case.
    explicit SocketException(SocketError error) noexcept : error_(error) {}

    /// The case, and the sentence for it.
    SocketError error() const noexcept { return error_; }
    const char* what() const noexcept override { return description(error_); }

  private:
    SocketError error_;
};

}  // namespace kestrav
