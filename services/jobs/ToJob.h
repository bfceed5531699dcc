#pragma once

namespace kestrav {

/// What the service says to it. The end of this direction means that the request is given up.
enum class ToJob : char {
    begin = '!',
    ask = 'T',       ///< it is its turn to have a person asked
    doNotAsk = 'X',  ///< somebody has just said no to another request of the subject, in the sentence that follows
    late = 'L',      ///< the request has been answered: nobody agreed in time. The question may go on
};

}  // namespace kestrav
