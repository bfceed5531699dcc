#pragma once

#include <iosfwd>

namespace kestrav {

/// Where a command says what it has to say. Neither stream is owned.
struct Console {
    std::ostream& out;  ///< standard output: the data, or else the progress
    std::ostream& err;  ///< standard error: refusals, and the progress when `out` carries data
};

}  // namespace kestrav
