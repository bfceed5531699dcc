#pragma once

#include <string>
#include <string_view>
#include <sys/socket.h>

#include "base/retry.h"

namespace kestrav {

/// Between a request's process and its service: sends a word (FromJob, ToJob) and its text as one message; the pair of
/// sockets keeps messages apart.
template <class Word>
void say(int channel, Word word, std::string_view text = {}) {
    std::string message(1, static_cast<char>(word));
    message += text;
    retry([&] { return ::send(channel, message.data(), message.size(), MSG_NOSIGNAL); });
}

}  // namespace kestrav
