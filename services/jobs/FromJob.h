#pragma once

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
    failed = 'X',  ///< something that nobody foresaw, in words for the log; its process ends without an answer
};

}  // namespace kestrav
