#include "services/privileged/DiskWriter.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <optional>
#include <vector>
#include <xxhash.h>

#include "services/privileged/AlignedBuffer.h"
#include "services/privileged/AnswerText.h"

namespace kestrav {
namespace {

// Large enough that the cost of a call vanishes beside the transfer, small beside the memory that a service may take.
constexpr std::size_t pieceSize = std::size_t{1} << 20U;
constexpr std::uint64_t sector = 512;
constexpr std::size_t largestBlock = 65536;

constexpr const char* repeatAdvice =
    " The accessory's memory may hold a mixture now: unplug it, plug it in again and repeat the update.";

/// One write, from its first piece to its check. The pieces together are the image's place on the disk, widened at
/// both edges to whole blocks of the disk.
class ImageCopy {
  public:
    ImageCopy(const ImageFile& image, DiskBytes& disk, std::uint64_t offset, const std::string& diskName)
        : image_(image),
          disk_(disk),
          offset_(offset),
          diskName_(diskName) {}

    Outcome<WriteReport> run() {
        const auto start = std::chrono::steady_clock::now();
        if (auto problem = writeAll()) return *problem;
        if (const auto error = disk_.flush()) {
            return failed("the disk " + diskName_ + " did not confirm that it kept the bytes: " + words(error) +
                          repeatAdvice);
        }
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        if (auto problem = checkAll()) return *problem;
        if (auto problem = checkThatImageStayed()) return *problem;
        return WriteReport{image_.size(), taken.count(), fromDisk_};
    }

  private:
    struct Piece {
        std::uint64_t at;  // on the disk
        std::size_t size;
    };
    struct Digests {
        XXH128_hash_t piece;
        XXH128_hash_t image;  // of the part that the image fills
    };

    static std::string words(std::error_code error) { return systemWords(error.value()) + "."; }

    static std::string imageWords(std::error_code error) {
        if (error == std::errc::timed_out) return "the file system of the image stopped answering.";
        return "reading the image: " + words(error);
    }

    std::string block(std::uint64_t byte) const { return "block " + std::to_string(byte / sector); }

    std::uint64_t imageEnd() const { return offset_ + image_.size(); }
    std::uint64_t firstByte() const { return offset_ / disk_.blockSize() * disk_.blockSize(); }
    std::uint64_t endByte() const {
        const std::uint64_t over = imageEnd() % disk_.blockSize();
        return over == 0 ? imageEnd() : imageEnd() + (disk_.blockSize() - over);
    }

    template <class Step>
    std::optional<Problem> forEachPiece(Step step) {
        for (std::uint64_t at = firstByte(); at < endByte(); at += pieceSize) {
            const Piece piece{at, static_cast<std::size_t>(std::min<std::uint64_t>(pieceSize, endByte() - at))};
            if (auto problem = step(piece)) return problem;
        }
        return std::nullopt;
    }

    /// The part of the buffer that the image fills; it starts at image offset `imageAt`.
    std::span<std::byte> imagePart(const Piece& piece, std::span<std::byte> buffer, std::uint64_t& imageAt) const {
        const std::uint64_t from = std::max(piece.at, offset_);
        const std::uint64_t to = std::min(piece.at + piece.size, imageEnd());
        imageAt = from - offset_;
        return buffer.subspan(static_cast<std::size_t>(from - piece.at), static_cast<std::size_t>(to - from));
    }

    Digests digestsOf(const Piece& piece, std::span<std::byte> bytes) const {
        const XXH128_hash_t whole = ::XXH3_128bits(bytes.data(), bytes.size());
        std::uint64_t imageAt = 0;
        const auto part = imagePart(piece, bytes, imageAt);
        // All pieces but the two at the edges.
        if (part.size() == bytes.size()) return {whole, whole};
        return {whole, ::XXH3_128bits(part.data(), part.size())};
    }

    /// What the disk holds beside the image in the first and in the last block.
    std::error_code readEdges(const Piece& piece, std::span<std::byte> buffer) {
        const std::size_t blockSize = disk_.blockSize();
        const bool head = piece.at < offset_;
        const bool tail = piece.at + piece.size > imageEnd();
        if (head) {
            if (const auto error = disk_.read(piece.at, buffer.first(blockSize))) return error;
        }
        if (!tail || (head && piece.size == blockSize)) return {};
        // By way of a buffer of its own, because the last block's place in `buffer` is not aligned well enough.
        const auto last = edge_.first(blockSize);
        if (const auto error = disk_.read(piece.at + piece.size - blockSize, last)) return error;
        std::memcpy(buffer.data() + piece.size - blockSize, last.data(), blockSize);
        return {};
    }

    std::optional<Problem> readImage(const Piece& piece, std::span<std::byte> buffer) {
        std::uint64_t imageAt = 0;
        const auto part = imagePart(piece, buffer, imageAt);
        const auto error = image_.read(imageAt, part);
        if (!error) return std::nullopt;
        const bool shorter = error == std::errc::result_out_of_range;
        return stopped(shorter ? "the image got shorter while it was read." : imageWords(error), piece.at);
    }

    /// The copy ended at byte `at` of the disk, which was not touched from there on.
    Problem stopped(const std::string& why, std::uint64_t at) const {
        if (at == firstByte()) return failed(why + " Nothing was written.");
        return failed(why + " " + diskName_ + " was written up to " + block(at) + "." + repeatAdvice);
    }

    std::optional<Problem> writeAll() {
        return forEachPiece([this](const Piece& piece) -> std::optional<Problem> {
            const auto bytes = buffer_.first(piece.size);
            if (const auto error = readEdges(piece, bytes)) {
                return stopped("reading " + diskName_ + " around " + block(piece.at) + ": " + words(error), piece.at);
            }
            if (auto problem = readImage(piece, bytes)) return problem;
            if (const auto error = disk_.write(piece.at, bytes)) {
                return failed("writing " + diskName_ + " from " + block(piece.at) + " on: " + words(error) +
                              repeatAdvice);
            }
            written_.push_back(digestsOf(piece, bytes));
            return std::nullopt;
        });
    }

    /// Compared is what was handed to the disk, by its digests: the file may have become another one meanwhile, and
    /// that says nothing about the disk.
    std::optional<Problem> checkAll() {
        std::size_t index = 0;
        return forEachPiece([this, &index](const Piece& piece) -> std::optional<Problem> {
            const auto bytes = buffer_.first(piece.size);
            const auto [error, fromDisk] = disk_.readBack(piece.at, bytes);
            if (error) {
                return failed("reading " + diskName_ + " back at " + block(piece.at) + ": " + words(error) +
                              repeatAdvice);
            }
            fromDisk_ = fromDisk_ && fromDisk;
            const XXH128_hash_t digest = ::XXH3_128bits(bytes.data(), bytes.size());
            if (::XXH128_isEqual(digest, written_[index++].piece) != 0) return std::nullopt;
            return failed(diskName_ + " holds other bytes than were written, somewhere in the " +
                          std::to_string(piece.size / sector) + " blocks from " + block(piece.at) + " on." +
                          repeatAdvice);
        });
    }

    /// Reads the image again and compares it with what was written: a file that was changed under the copy may have
    /// left half of each on the disk. Its times don't tell: they stay as they are when a program changes bytes of the
    /// file that it has in its memory and that it had changed before.
    std::optional<Problem> checkThatImageStayed() {
        if (const auto error = image_.lengthError()) return cannotCompare(error);
        std::size_t index = 0;
        return forEachPiece([this, &index](const Piece& piece) -> std::optional<Problem> {
            std::uint64_t imageAt = 0;
            const auto part = imagePart(piece, buffer_.first(piece.size), imageAt);
            const auto error = image_.read(imageAt, part);
            if (error) return cannotCompare(error);
            const XXH128_hash_t digest = ::XXH3_128bits(part.data(), part.size());
            if (::XXH128_isEqual(digest, written_[index++].image) != 0) return std::nullopt;
            return imageChanged();
        });
    }

    static Problem cannotCompare(std::error_code error) {
        if (error == std::errc::result_out_of_range) return imageChanged();
        return failed("the image was written, but could not be compared once more: " + imageWords(error) +
                      repeatAdvice);
    }

    static Problem imageChanged() {
        return failed("the image changed while it was being written." + std::string(repeatAdvice));
    }

    const ImageFile& image_;
    DiskBytes& disk_;
    std::uint64_t offset_;
    const std::string& diskName_;
    AlignedBuffer buffer_{pieceSize};
    AlignedBuffer edge_{largestBlock};
    std::vector<Digests> written_;
    bool fromDisk_ = true;
};

}  // namespace

Outcome<WriteReport> writeImage(const ImageFile& image, DiskBytes& disk, std::uint64_t offset,
                                const std::string& diskName) {
    return ImageCopy(image, disk, offset, diskName).run();
}

}  // namespace kestrav
