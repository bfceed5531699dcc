#pragma once

#include <optional>
#include <string>

namespace kestrav {

/// What the commands that have an image written can be told.
struct SendOptions {
    bool verify = false;                     ///< look at the disk a second time
    bool json = false;                       ///< one object on standard output in place of the last line
    bool progress = false;                   ///< with `json`: one object a line before it, as the write goes on
    bool quiet = false;                      ///< say nothing of a good end, and nothing on the way
    bool noPrompt = false;                   ///< fail rather than have somebody asked for a password
    bool dryRun = false;                     ///< everything but the writing
    bool check = false;                      ///< compare with the checksum in the file beside the image
    std::optional<std::string> sha256 = {};  ///< compare with this checksum
};

}  // namespace kestrav
