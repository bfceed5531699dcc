#pragma once

#include <cstdint>
#include <string>

namespace kestrav {

/// What is asked of the command service, as far as it takes that to know whether an answer is about it.
struct Request {
    std::string disk;             ///< the kernel's name of the accessory's
    std::int64_t firstBlock = 0;  ///< of the place on the disk, in blocks of 512 bytes
    std::int64_t bytes = 0;       ///< of the image, or of the blocks that were asked for
    std::string image = {};       ///< its path, where one is to be written and the engine's arguments told it
};

}  // namespace kestrav
