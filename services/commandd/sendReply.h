#pragma once

#include <string_view>

namespace kestrav {

/// Hands the whole reply to the kernel in one piece, because the peer reads once, and closes the sending side. Never
/// waits and never raises SIGPIPE; a peer that has gone misses it.
void sendReply(int connection, std::string_view reply);

/// Takes and forgets what the peer still sends. Closing a connection with unread bytes would reset it, and the reset
/// could overtake the reply. False when there will be nothing more.
bool drain(int connection);

}  // namespace kestrav
