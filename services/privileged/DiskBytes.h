#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <system_error>

namespace kestrav {

/// The bytes of one opened disk.
///
/// Offsets and lengths are multiples of blockSize() and lie on the disk; buffers begin at a multiple of
/// `bufferAlignment`. An operation moves the whole span or returns what the system said.
class DiskBytes {
  public:
    /// Enough for every device's direct access: a page.
    static constexpr std::size_t bufferAlignment = 4096;

    virtual ~DiskBytes() = default;

    virtual std::uint64_t size() const = 0;
    virtual std::uint32_t blockSize() const = 0;

    virtual std::error_code read(std::uint64_t offset, std::span<std::byte> into) = 0;
    virtual std::error_code write(std::uint64_t offset, std::span<const std::byte> bytes) = 0;

    /// Returns when everything written so far is on the medium, the disk's own cache included.
    virtual std::error_code flush() = 0;

    struct ReadBack {
        std::error_code error;
        bool fromDisk = false;  ///< false when the bytes may have come from the system's memory
    };
    /// Reads bytes that were flushed, from the disk itself if there is any way to.
    virtual ReadBack readBack(std::uint64_t offset, std::span<std::byte> into) = 0;
};

}  // namespace kestrav
