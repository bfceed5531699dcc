#pragma once

#include <string>

namespace kestrav {

/// What somebody is to agree to, as the prompt names it. Parts that a request doesn't have are empty. Nothing of it
/// needs to be fit to be shown yet.
struct Intent {
    std::string file = {};        ///< the image
    std::string bytes = {};       ///< its size, in decimal
    std::string disk = {};        ///< for example "sdb"
    std::string firstBlock = {};  ///< in blocks of 512 bytes from the start of the disk, in decimal
};

}  // namespace kestrav
