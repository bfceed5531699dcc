#pragma once

#include <cstdint>

namespace kestrav {

// UDP over IPv4 as plain functions. Failures are results of -1 and nothing else. Descriptors belong to the caller.
// Ports are in host order unless said otherwise, lengths are bytes, texts end with NUL. A signal handler that runs
// during a call changes no result. All of them may be used on any thread.

/// Binds a datagram socket. With `address` null, "" or "255.255.255.255": any interface, `port`, broadcast allowed.
/// With any other address the text and the port do not count: the socket gets the zero address and a port of
/// the system's choosing. Returns the descriptor, or -1; on failure the descriptor is not closed.
std::int32_t udp_server_bind(const char* address, std::int32_t port);

/// Waits without limit for one datagram and takes at most `length` bytes of it; the rest of it is lost.
/// Returns the bytes received, or -1. `peerAddress` (16 bytes, zero-filled by the caller) gets the sender's dotted
/// text without a NUL and `peerPort` its port as the raw field in network byte order, widened; zeros on failure.
std::int32_t udp_receive_from(std::int32_t fd, void* buffer, std::int32_t length, char* peerAddress,
                              std::int32_t* peerPort);

/// A new datagram socket, or -1.
std::int32_t udp_client_open();

/// Allows sending to broadcast addresses. What setsockopt(2) returns.
std::int32_t udp_enable_broadcast(std::int32_t fd);

/// Looks a host name or dotted address up. Returns 0 and copies the dotted text of its first address, without a NUL,
/// into `address` (16 bytes, zero-filled by the caller); or returns -1 and leaves `address` alone.
std::int32_t udp_resolve_host(const char* host, char* address);

/// Sends one datagram to a dotted address; a text that is none means 255.255.255.255. What sendto(2) returns.
std::int32_t udp_send_to(std::int32_t fd, const void* buffer, std::int32_t length, const char* address,
                         std::int32_t port);

/// What close(2) returns.
std::int32_t udp_close(std::int32_t fd);

}  // namespace kestrav
