#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace kestrav {

/// How long an accessory is waited for.
struct Waiting {
    std::optional<std::int64_t> seconds;  ///< absent: until somebody ends the program
};

/// What the commands that have an image written can be told about several accessories.
struct FleetOptions {
    bool all = false;                        ///< every accessory that is meant, side by side
    std::int64_t jobs = 16;                  ///< how many at a time
    std::optional<Waiting> wait = {};        ///< for an accessory; with `all` for the next one, too
    std::optional<std::string> backup = {};  ///< the folder in which what stood there is kept before
};

}  // namespace kestrav
