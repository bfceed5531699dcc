#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/Outcome.h"

namespace kestrav {

/// The bytes of one opened disk.
///
/// Offsets and lengths are multiples of blockSize() and lie on the disk; buffers begin at a multiple of
/// `bufferAlignment`. An operation moves the whole span or fails with the system's words, its `cause` the system's
/// error.
class DiskBytes {
  public:
    /// Enough for every device's direct access: a page.
    static constexpr std::size_t kBufferAlignment = 4096;

    virtual ~DiskBytes() = default;

    virtual std::uint64_t size() const = 0;
    virtual std::uint32_t blockSize() const = 0;

    virtual Outcome<void> read(std::uint64_t offset, std::span<std::byte> into) = 0;
    virtual Outcome<void> write(std::uint64_t offset, std::span<const std::byte> bytes) = 0;

    /// Returns when everything written so far is on the medium, the disk's own cache included.
    virtual Outcome<void> flush() = 0;

    enum class ReadFrom {
        disk,
        memory,  ///< the bytes may have come from the system's memory
    };
    /// Reads bytes that were flushed, from the disk itself if there is any way to.
    virtual Outcome<ReadFrom> readBack(std::uint64_t offset, std::span<std::byte> into) = 0;
};

}  // namespace kestrav
