#pragma once

#include <cstdint>

namespace kestrav {

// TCP over IPv4 as plain functions. Failures are small negative results and nothing else: no exception, no log.
// Descriptors belong to the caller from the moment they are returned. Ports are in host order unless said otherwise,
// times are whole seconds, lengths are bytes, texts end with NUL. A signal handler that runs during a call changes
// no result. All of them may be used on any thread.

/// Connects to `host`, a name or dotted address, waiting `seconds` at most for the connection (looking the name up is
/// not counted). Returns the descriptor, in blocking mode, or
/// -1 no such host; -2 waiting failed (a negative time, no descriptor left); -3 time-out; -4 refused or failed.
std::int32_t tcp_connect_with_timeout(const char* host, std::int32_t port, std::int32_t seconds);

/// Reads once, at most `length` bytes, after waiting `seconds` for something to read; 0 or less waits without limit.
/// Returns the bytes read, 0 on time-out and at the end of the stream, -1 on failure.
std::int32_t tcp_read_with_timeout(std::int32_t fd, void* buffer, std::int32_t length, std::int32_t seconds);

/// Writes all of `length` bytes to any stream descriptor: socket, pipe or file. Returns `length`, or -1 as soon as
/// one write fails; what went before it stays sent. A peer that is gone is such a failure and raises no SIGPIPE.
std::int32_t tcp_write_all(std::int32_t fd, const void* buffer, std::int32_t length);

/// Listens on `address`, a dotted text, with a backlog of 128. Port 0 lets the system choose. A text that is not
/// dotted, a name for one, means 255.255.255.255: that succeeds on Linux, and nobody reaches it. Returns the
/// descriptor, -1 if it can't be bound, -2 if it can't listen; on failure the descriptor is not closed.
std::int32_t tcp_listen(const char* address, std::int32_t port);

/// Takes the next connection, waiting without limit. Returns its descriptor, or -1 on failure; descriptor 0 is taken
/// for a failure, too. Either way `peerAddress` (16 bytes, zero-filled by the caller) gets the peer's dotted text
/// without a NUL and `peerPort` the peer's port, both zero where nobody came. The port is the raw field in network
/// byte order, widened: 9090 reads 0x8223 on a little-endian machine.
std::int32_t tcp_accept(std::int32_t fd, char* peerAddress, std::int32_t* peerPort);

/// What close(2) returns.
std::int32_t tcp_close(std::int32_t fd);

}  // namespace kestrav
