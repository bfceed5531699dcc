#pragma once

#include <cstdint>
#include <string>

#include "services/privileged/DiskBytes.h"
#include "services/privileged/ImageFile.h"
#include "services/privileged/Outcome.h"

namespace kestrav {

struct WriteReport {
    std::uint64_t bytes;
    double seconds;  ///< for writing and flushing, without the check
    bool verified;   ///< read back from the disk itself; false where the system could only show its own memory
};

/// Copies the whole image onto the disk from byte `offset` on, flushes, reads everything back and compares; then reads
/// the image once more, because one that changed meanwhile may have left a mixture, which is a failure. Bytes of
/// the disk outside of the image keep their values, also within a block that the image covers in part. The image fits
/// on the disk: the caller has made sure.
///
/// `diskName` is for the sentences. Memory: a buffer of 1 MiB, and 32 bytes for each MiB of the image.
Outcome<WriteReport> writeImage(const ImageFile& image, DiskBytes& disk, std::uint64_t offset,
                                const std::string& diskName);

}  // namespace kestrav
