#pragma once

#include <string>
#include <string_view>
#include <sys/socket.h>

#include "base/retry.h"

namespace kestrav {

/// What the process of a request says to its service: a message begins with one of these.
enum class FromJob : char {
    wantsToAsk = 'Q',    ///< a person, about the subject up to a NUL; behind it stands what is asked, for the log
    hasAsked = 'O',      ///< nobody is asked any more, and nobody said no
    wasDenied = 'D',     ///< somebody said no, in the sentence that follows
    wantsToBegin = 'B',  ///< the work
    answered = 'A',      ///< the gate's answer, which follows
    denied = 'R',        ///< the gate's denial up to a NUL; behind it stands what was asked
    notBegun = 'N',
};

/// What the service says to it. The end of this direction means that the request is given up.
enum class ToJob : char {
    begin = '!',
    ask = 'T',       ///< it is its turn to have a person asked
    doNotAsk = 'X',  ///< somebody has just said no to another request of the subject, in the sentence that follows
    late = 'L',      ///< the request has been answered: nobody agreed in time. The question may go on
};

/// Sends a message whole; the pair of sockets keeps messages apart.
template <class Word>
void say(int channel, Word word, std::string_view text = {}) {
    std::string message(1, static_cast<char>(word));
    message += text;
    retry([&] { return ::send(channel, message.data(), message.size(), MSG_NOSIGNAL); });
}

}  // namespace kestrav
