#pragma once

#include <cstdint>
#include <string>

#include "base/Outcome.h"
#include "services/disk/DiskBytes.h"
#include "services/gate/WriteProgress.h"
#include "services/image/ImageBytes.h"

namespace kestrav {

struct WriteReport {
    std::uint64_t bytes;
    double seconds;  ///< for writing and flushing, without the check
    bool verified;   ///< read back from the disk itself; false where the system could only show its own memory
};

/// Copies the whole image onto the disk from byte `offset` on, flushes, reads everything back and compares; then reads
/// the image once more unless it is complete, because one that changed meanwhile may have left a mixture, which is a
/// failure. Bytes of the disk outside of the image keep their values, also within a block that the image covers in
/// part. Nothing is written before the first and the last block of the place could be read. The image fits on the disk:
/// the caller has made sure.
///
/// `diskName` is for the sentences. Memory: a buffer of 1 MiB, and 32 bytes for each MiB of the image.
Outcome<WriteReport> writeImage(const ImageBytes& image, DiskBytes& disk, std::uint64_t offset,
                                const std::string& diskName, WriteProgress& progress);

}  // namespace kestrav
