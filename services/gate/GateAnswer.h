#pragma once

#include <string>

namespace kestrav {

/// What came of a request at the gate.
struct GateAnswer {
    enum class Kind {
        answered,  ///< carried out, or refused or failed for what was asked; the gate has logged it
        denied,    ///< the asker may not ask; nothing was done, and it is not logged yet
        notBegun,  ///< the asker did not want it any more; nothing was done and nobody is told
    };
    Kind kind;
    std::string text;        ///< the answer: for a read the blocks, else a line of UTF-8; empty for notBegun
    std::string asked = {};  ///< denied by the gate: the command line, in one harmless line; for the log
};

}  // namespace kestrav
