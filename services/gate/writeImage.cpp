#include "services/gate/writeImage.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <utility>
#include <vector>
#include <xxhash.h>

#include "protocol/accessory.h"
#include "services/disk/AlignedBuffer.h"
#include "services/image/RunningDigest.h"

namespace kestrav {
namespace {

// Large enough that the cost of a call vanishes beside the transfer, small beside the memory that a service may take.
constexpr std::size_t kPieceSize = std::size_t{1} << 20U;
constexpr std::size_t kLargestBlock = 65536;

constexpr const char* kRepeatAdvice =
    " The accessory's memory may hold a mixture now: unplug it, plug it in again and repeat the update.";

/// One write, from its first piece to its check. The pieces together are the image's place on the disk, widened at
/// both edges to whole blocks of the disk.
class ImageCopy {
  public:
    ImageCopy(const ImageBytes& image, DiskBytes& disk, std::uint64_t offset, const std::string& diskName,
              WriteProgress& progress)
        : image_(image),
          disk_(disk),
          offset_(offset),
          diskName_(diskName),
          progress_(progress) {}

    Outcome<WriteReport> run() {
        const auto start = std::chrono::steady_clock::now();
        if (const auto edges = readEdges(); !edges) return edges.problem();
        if (const auto written = writeAll(); !written) return written.problem();
        progress_.enter(WritePhase::flushing, 0);
        if (const auto flushed = disk_.flush(); !flushed) {
            return failed("the disk " + diskName_ +
                          " did not confirm that it kept the bytes: " + flushed.problem().sentence + kRepeatAdvice);
        }
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
        if (const auto checked = checkAll(); !checked) return checked.problem();
        if (const auto same = checkDigest(); !same) return same.problem();
        if (const auto stayed = checkThatImageStayed(); !stayed) return stayed.problem();
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

    static std::string imageWords(const Problem& problem) {
        if (problem.cause == std::errc::timed_out) return "the file system of the image stopped answering.";
        return "reading the image: " + problem.sentence;
    }

    std::string block(std::uint64_t byte) const { return "block " + std::to_string(byte / kBlockBytes); }

    std::uint64_t imageEnd() const { return offset_ + image_.size(); }
    std::uint64_t firstByte() const { return offset_ / disk_.blockSize() * disk_.blockSize(); }
    std::uint64_t endByte() const {
        const std::uint64_t over = imageEnd() % disk_.blockSize();
        return over == 0 ? imageEnd() : imageEnd() + (disk_.blockSize() - over);
    }

    template <class Step>
    Outcome<void> forEachPiece(Step step) {
        for (std::uint64_t at = firstByte(); at < endByte(); at += kPieceSize) {
            if (image_.timeIsUp()) return failed("the write took longer than an hour." + std::string(kRepeatAdvice));
            const Piece piece{at, static_cast<std::size_t>(std::min<std::uint64_t>(kPieceSize, endByte() - at))};
            if (auto stepped = step(piece); !stepped) return stepped;
        }
        return {};
    }

    /// The part of the buffer that the image fills; it starts at image offset `imageAt`.
    std::span<std::byte> imagePart(const Piece& piece, std::span<std::byte> buffer, std::uint64_t& imageAt) const {
        const std::uint64_t from = std::max(piece.at, offset_);
        const std::uint64_t to = std::min(piece.at + piece.size, imageEnd());
        imageAt = from - offset_;
        return buffer.subspan(static_cast<std::size_t>(from - piece.at), static_cast<std::size_t>(to - from));
    }

    Digests digestsOf(const Piece& piece, std::span<std::byte> bytes) {
        const XXH128_hash_t whole = ::XXH3_128bits(bytes.data(), bytes.size());
        std::uint64_t imageAt = 0;
        const auto part = imagePart(piece, bytes, imageAt);
        if (image_.expected()) imageDigest_.take(part);
        // All pieces but the two at the edges.
        if (part.size() == bytes.size()) return {whole, whole};
        return {whole, ::XXH3_128bits(part.data(), part.size())};
    }

    /// What the disk holds beside the image in the first and in the last block; also where the image fills them, since
    /// a block that can't be read now could not be checked later. Each has a buffer of its own, because the last
    /// block's place in `buffer_` is not aligned well enough.
    Outcome<void> readEdges() {
        const std::size_t blockSize = disk_.blockSize();
        for (auto [at, into] : {std::pair(firstByte(), &head_), std::pair(endByte() - blockSize, &tail_)}) {
            const auto got = disk_.read(at, into->first(blockSize));
            if (got) continue;
            return failed("reading " + diskName_ + " around " + block(at) + ": " + got.problem().sentence +
                          " Nothing was written.");
        }
        return {};
    }

    void putEdges(const Piece& piece, std::span<std::byte> buffer) {
        const std::size_t blockSize = disk_.blockSize();
        if (piece.at < offset_) std::memcpy(buffer.data(), head_.first(blockSize).data(), blockSize);
        if (piece.at + piece.size <= imageEnd()) return;
        std::memcpy(buffer.data() + piece.size - blockSize, tail_.first(blockSize).data(), blockSize);
    }

    Outcome<void> readImage(const Piece& piece, std::span<std::byte> buffer) {
        std::uint64_t imageAt = 0;
        const auto part = imagePart(piece, buffer, imageAt);
        auto got = image_.read(imageAt, part);
        if (got) return got;
        const bool shorter = got.problem().cause == std::errc::result_out_of_range;
        return stopped(shorter ? "the image got shorter while it was read." : imageWords(got.problem()), piece.at);
    }

    /// The copy ended at byte `at` of the disk, which was not touched from there on.
    Problem stopped(const std::string& why, std::uint64_t at) const {
        if (at == firstByte()) return failed(why + " Nothing was written.");
        return failed(why + " " + diskName_ + " was written up to " + block(at) + "." + kRepeatAdvice);
    }

    Outcome<void> writeAll() {
        progress_.enter(WritePhase::writing, image_.size());
        return forEachPiece([this](const Piece& piece) -> Outcome<void> {
            const auto bytes = buffer_.first(piece.size);
            putEdges(piece, bytes);
            if (auto got = readImage(piece, bytes); !got) return got;
            if (const auto written = disk_.write(piece.at, bytes); !written) {
                return failed("writing " + diskName_ + " from " + block(piece.at) +
                              " on: " + written.problem().sentence + kRepeatAdvice);
            }
            written_.push_back(digestsOf(piece, bytes));
            advance(piece);
            return {};
        });
    }

    /// Compared is what was handed to the disk, by its digests: the file may have become another one meanwhile, and
    /// that says nothing about the disk.
    Outcome<void> checkAll() {
        progress_.enter(WritePhase::checking, image_.size());
        std::size_t index = 0;
        return forEachPiece([this, &index](const Piece& piece) -> Outcome<void> {
            const auto bytes = buffer_.first(piece.size);
            const auto got = disk_.readBack(piece.at, bytes);
            if (!got) {
                return failed("reading " + diskName_ + " back at " + block(piece.at) + ": " + got.problem().sentence +
                              kRepeatAdvice);
            }
            fromDisk_ = fromDisk_ && got.value() == DiskBytes::ReadFrom::disk;
            const XXH128_hash_t digest = ::XXH3_128bits(bytes.data(), bytes.size());
            advance(piece);
            if (::XXH128_isEqual(digest, written_[index++].piece) != 0) return {};
            return failed(diskName_ + " holds other bytes than were written, somewhere in the " +
                          std::to_string(piece.size / kBlockBytes) + " blocks from " + block(piece.at) + " on." +
                          kRepeatAdvice);
        });
    }

    /// Reads the image again and compares it with what was written: a file that was changed under the copy may have
    /// left half of each on the disk. Its times don't tell: they stay as they are when a program changes bytes of the
    /// file that it has in its memory and that it had changed before.
    Outcome<void> checkThatImageStayed() {
        if (image_.isComplete()) return {};
        if (const auto kept = image_.keptLength(); !kept) return cannotCompare(kept.problem());
        std::size_t index = 0;
        return forEachPiece([this, &index](const Piece& piece) -> Outcome<void> {
            std::uint64_t imageAt = 0;
            const auto part = imagePart(piece, buffer_.first(piece.size), imageAt);
            if (const auto got = image_.readAgain(imageAt, part); !got) return cannotCompare(got.problem());
            const XXH128_hash_t digest = ::XXH3_128bits(part.data(), part.size());
            if (::XXH128_isEqual(digest, written_[index++].image) != 0) return {};
            return imageChanged();
        });
    }

    /// What was written may differ from what was read before the write.
    Outcome<void> checkDigest() const {
        const auto expected = image_.expected();
        if (expected && imageDigest_.value() != *expected) return imageChanged();
        return {};
    }

    void advance(const Piece& piece) { progress_.advance(std::min(piece.at + piece.size, imageEnd()) - offset_); }

    static Problem cannotCompare(const Problem& why) {
        if (why.cause == std::errc::result_out_of_range) return imageChanged();
        return failed("the image was written, but could not be compared once more: " + imageWords(why) + kRepeatAdvice);
    }

    static Problem imageChanged() {
        return failed("the image changed while it was being written." + std::string(kRepeatAdvice));
    }

    const ImageBytes& image_;
    DiskBytes& disk_;
    std::uint64_t offset_;
    const std::string& diskName_;
    WriteProgress& progress_;
    AlignedBuffer buffer_{kPieceSize};
    AlignedBuffer head_{kLargestBlock};
    AlignedBuffer tail_{kLargestBlock};
    RunningDigest imageDigest_;  // of what was taken from the image
    std::vector<Digests> written_;
    bool fromDisk_ = true;
};

}  // namespace

Outcome<WriteReport> writeImage(const ImageBytes& image, DiskBytes& disk, std::uint64_t offset,
                                const std::string& diskName, WriteProgress& progress) {
    return ImageCopy(image, disk, offset, diskName, progress).run();
}

}  // namespace kestrav
