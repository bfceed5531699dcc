#include "services/image/CompleteImage.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "base/systemProblem.h"
#include "services/image/RunningDigest.h"

namespace kestrav {
namespace {

constexpr std::size_t kPieceSize = std::size_t{1} << 20U;

template <class Step>
Outcome<void> forEachPiece(std::uint64_t size, Step step) {
    for (std::uint64_t at = 0; at < size; at += kPieceSize) {
        const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(kPieceSize, size - at));
        if (auto stepped = step(at, length); !stepped) return stepped;
    }
    return {};
}

Problem nothingWritten(const Problem& why) {
    if (why.cause == std::errc::timed_out) {
        return failed("the file system of the image stopped answering. Nothing was written.", why.cause);
    }
    if (why.cause == std::errc::result_out_of_range) {
        return failed("the image changed while it was read. Nothing was written.", why.cause);
    }
    return failed("reading the image: " + why.sentence + " Nothing was written.", why.cause);
}

}  // namespace

CompleteImage::CompleteImage(ImageFile file, std::optional<PlacesInMemory::Place> place)
    : file_(std::move(file)),
      place_(std::move(place)) {
    if (file_.size() > kMostInMemory) place_.reset();
    if (place_) memory_ = std::make_unique_for_overwrite<std::byte[]>(static_cast<std::size_t>(file_.size()));
}

Outcome<CompleteImage> CompleteImage::read(ImageFile file, std::optional<PlacesInMemory::Place> place,
                                           const std::function<void(std::uint64_t)>& advanced) {
    CompleteImage image(std::move(file), std::move(place));
    const auto got = image.memory_ ? image.readTwice(advanced) : image.readOnce(advanced);
    if (!got) return nothingWritten(got.problem());
    return image;
}

Outcome<void> CompleteImage::readTwice(const std::function<void(std::uint64_t)>& advanced) {
    const auto toMemory = [&](std::uint64_t at, std::size_t length) -> Outcome<void> {
        auto got = file_.read(at, std::span(memory_.get() + at, length));
        if (got) advanced(at + length);
        return got;
    };
    const auto compared = [&](std::uint64_t at, std::size_t length) -> Outcome<void> {
        const auto same = file_.holds(at, std::span(memory_.get() + at, length));
        if (!same) return same.problem();
        if (!same.value()) return systemProblem(ERANGE);
        return {};
    };
    if (auto got = forEachPiece(size(), toMemory); !got) return got;
    if (auto got = forEachPiece(size(), compared); !got) return got;
    // Its process ends while the disk is written.
    file_.letGo();
    return {};
}

Outcome<void> CompleteImage::readOnce(const std::function<void(std::uint64_t)>& advanced) {
    const auto buffer = std::make_unique_for_overwrite<std::byte[]>(kPieceSize);
    RunningDigest digest;
    const auto hashed = [&](std::uint64_t at, std::size_t length) -> Outcome<void> {
        const std::span piece(buffer.get(), length);
        if (auto got = file_.read(at, piece); !got) return got;
        digest.take(piece);
        advanced(at + length);
        return {};
    };
    if (auto got = forEachPiece(size(), hashed); !got) return got;
    digest_ = digest.value();
    return {};
}

Outcome<void> CompleteImage::read(std::uint64_t offset, std::span<std::byte> into) const {
    if (!memory_) return file_.read(offset, into);
    std::memcpy(into.data(), memory_.get() + offset, into.size());
    return {};
}

Outcome<void> CompleteImage::readAgain(std::uint64_t offset, std::span<std::byte> into) const {
    return file_.read(offset, into);
}

}  // namespace kestrav
