#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "services/image/ImageBytes.h"
#include "services/image/ImageFile.h"
#include "services/image/PlacesInMemory.h"

namespace kestrav {

/// An image that has come whole before anything is done with it: whoever stops its reader, or the file system that
/// hangs, leaves no mixture on a disk, and holds no disk. Up to 16 MiB it stands in memory, and was read twice, so that
/// half of an older and half of a newer file don't pass for an image; a longer one, and one that finds no place there,
/// has been read to its end once, and what is read of it later is compared with that.
class CompleteImage final : public ImageBytes {
  public:
    static constexpr std::uint64_t kMostInMemory = std::uint64_t{16} << 20U;

    /// Reads all of the file; `advanced` hears how many bytes have come. `place` is kept as long as the image. The
    /// problem's sentence is whole, and says that nothing was written.
    static Outcome<CompleteImage> read(ImageFile file, std::optional<PlacesInMemory::Place> place,
                                       const std::function<void(std::uint64_t)>& advanced);

    std::uint64_t size() const override { return file_.size(); }
    Outcome<void> read(std::uint64_t offset, std::span<std::byte> into) const override;
    Outcome<void> readAgain(std::uint64_t offset, std::span<std::byte> into) const override;
    Outcome<void> keptLength() const override { return file_.keptLength(); }
    std::optional<ImageDigest> expected() const override { return digest_; }
    bool isComplete() const override { return memory_ != nullptr; }
    bool timeIsUp() const override { return file_.timeIsUp(); }

  private:
    CompleteImage(ImageFile file, std::optional<PlacesInMemory::Place> place);
    Outcome<void> readTwice(const std::function<void(std::uint64_t)>& advanced);
    Outcome<void> readOnce(const std::function<void(std::uint64_t)>& advanced);

    ImageFile file_;
    std::optional<PlacesInMemory::Place> place_;
    std::unique_ptr<std::byte[]> memory_;  ///< none where the image is read anew
    std::optional<ImageDigest> digest_;    ///< there
};

}  // namespace kestrav
