#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "base/Outcome.h"

namespace kestrav {

/// XXH3, 128 bits.
using ImageDigest = std::array<std::uint64_t, 2>;

/// The bytes of an image that is being written. The causes of problems are those of ImageFile.
class ImageBytes {
  public:
    virtual ~ImageBytes() = default;

    virtual std::uint64_t size() const = 0;
    /// Fills `into` with what is to be written, from `offset` on.
    virtual Outcome<void> read(std::uint64_t offset, std::span<std::byte> into) const = 0;
    /// The same from the file as it is now.
    virtual Outcome<void> readAgain(std::uint64_t offset, std::span<std::byte> into) const = 0;
    /// A problem unless the file is as long as when it was opened.
    virtual Outcome<void> keptLength() const = 0;
    /// Of the whole image, where it has been read before and what read() gives might differ from that.
    virtual std::optional<ImageDigest> expected() const { return std::nullopt; }
    /// Whether read() gives the same bytes for ever, whatever becomes of the file.
    virtual bool isComplete() const { return false; }
    /// Whether more time has passed than a write may take.
    virtual bool timeIsUp() const = 0;
};

}  // namespace kestrav
