#pragma once

#include <iosfwd>
#include <optional>

namespace kestrav {

/// Where a command says what it has to say. Nothing is owned.
struct Console {
    std::ostream& out;  ///< standard output: the data, or else the progress
    std::ostream& err;  ///< standard error: refusals, and the progress when `out` carries data
    /// The descriptor of a terminal behind `err`: a line that is taken back again may be shown there.
    std::optional<int> terminal = {};
};

}  // namespace kestrav
