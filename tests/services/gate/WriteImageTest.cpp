#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

#include "services/gate/writeImage.h"
#include "services/image/CompleteImage.h"
#include "services/image/ImageFile.h"
#include "tests/TemporaryFolder.h"
#include "tests/services/gate/FakeDisk.h"
#include "tests/services/gate/RecordingProgress.h"

namespace kestrav {
namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20U;

class WriteImage : public testing::Test {
  protected:
    ImageFile image(const std::string& bytes) {
        path_ = folder_.file("image", bytes);
        auto opened = ImageFile::open(path_, rightsOf(::geteuid()).value());
        return std::move(opened.value());
    }

    /// The sentence of the failure, empty after a success.
    static std::string failure(const Outcome<WriteReport>& outcome) {
        return outcome ? std::string() : outcome.problem().sentence;
    }

    TemporaryFolder folder_;
    std::string path_;
    RecordingProgress progress_;
};

struct PlaceRow {
    std::string name;
    std::size_t imageBytes;
    std::uint64_t offset;
    std::uint32_t blockSize;

    friend void PrintTo(const PlaceRow& row, std::ostream* out) { *out << row.name; }
};

class ImagePlace : public WriteImage, public testing::WithParamInterface<PlaceRow> {};

TEST_P(ImagePlace, ChangesNoByteBesideTheImage) {
    const auto& [name, size, offset, blockSize] = GetParam();
    const std::string before = patternOf(4 * mebibyte, 7);
    const std::string bytes = patternOf(size, 3);
    FakeDisk disk(before, blockSize);
    const auto report = writeImage(image(bytes), disk, offset, "sdb", progress_);
    ASSERT_TRUE(report) << failure(report);
    EXPECT_EQ(report.value().bytes, size);
    EXPECT_TRUE(report.value().verified);
    std::string expected = before;
    expected.replace(offset, size, bytes);
    EXPECT_TRUE(disk.bytes == expected);
    EXPECT_FALSE(disk.wasMisused);
    EXPECT_EQ(disk.unflushedWrites, 0U);
}

INSTANTIATE_TEST_SUITE_P(Rows, ImagePlace,
                         testing::Values(PlaceRow{"OneByte", 1, 786432, 512}, PlaceRow{"OneBlock", 512, 786432, 512},
                                         PlaceRow{"FortyThousand", 40000, 786432, 512},
                                         PlaceRow{"WholePieces", 2 * mebibyte, 0, 512},
                                         PlaceRow{"OneByteMoreThanAPiece", mebibyte + 1, 1048576, 512},
                                         PlaceRow{"OneByteLessThanAPiece", mebibyte - 1, 1048576, 512},
                                         PlaceRow{"UpToTheEnd", mebibyte, 3 * mebibyte, 512},
                                         PlaceRow{"LastByteFree", mebibyte - 1, 3 * mebibyte, 512},
                                         PlaceRow{"LastBlock", 512, 4 * mebibyte - 512, 512},
                                         PlaceRow{"WithinOneLargeBlock", 700, 512, 4096},
                                         PlaceRow{"LargeBlocksBothEdges", 40000, 512 * 3, 4096},
                                         PlaceRow{"LargeBlocksHeadOnly", 4096 * 2 - 512, 512, 4096},
                                         PlaceRow{"LargeBlocksManyPieces", 2 * mebibyte + 100, 512 * 7, 4096},
                                         PlaceRow{"LargestBlocks", 70000, 512, 65536}),
                         [](const auto& row) { return row.param.name; });

TEST_F(WriteImage, SaysWhereAWriteFailed) {
    FakeDisk disk(patternOf(4 * mebibyte));
    disk.failsWriteAt = mebibyte + 5;
    const auto report = writeImage(image(patternOf(2 * mebibyte, 3)), disk, 0, "sdb", progress_);
    ASSERT_FALSE(report);
    EXPECT_EQ(report.problem().kind, Problem::Kind::failed);
    EXPECT_NE(failure(report).find("writing sdb from block 2048 on: Input/output error. "), std::string::npos);
    EXPECT_NE(failure(report).find("repeat the update"), std::string::npos);
}

TEST_F(WriteImage, SaysThatNothingWasWrittenWhenTheEdgeCannotBeRead) {
    const std::string before = patternOf(mebibyte);
    FakeDisk disk(before);
    disk.failsReadAt = 512;
    const auto report = writeImage(image(patternOf(700, 3)), disk, 0, "sdb", progress_);
    EXPECT_NE(failure(report).find("reading sdb around block 1: Input/output error. Nothing was written."),
              std::string::npos);
    EXPECT_EQ(disk.bytes, before);
}

TEST_F(WriteImage, WritesNothingWhenALastBlockCannotBeRead) {
    const std::string before = patternOf(4 * mebibyte);
    for (const std::size_t size : {2 * mebibyte + 700, 2 * mebibyte + 512}) {
        FakeDisk disk(before);
        disk.failsReadAt = (size - 1) / 512 * 512;
        const auto report = writeImage(image(patternOf(size, 3)), disk, 0, "sdb", progress_);
        EXPECT_NE(failure(report).find("Input/output error. Nothing was written."), std::string::npos) << size;
        EXPECT_TRUE(disk.bytes == before) << size;
    }
}

TEST_F(WriteImage, TellsHowFarItIs) {
    FakeDisk disk(patternOf(4 * mebibyte));
    ASSERT_TRUE(writeImage(image(patternOf(2 * mebibyte + 700, 3)), disk, 512, "sdb", progress_));
    const std::uint64_t all = 2 * mebibyte + 700;
    ASSERT_EQ(progress_.steps.size(), 3U);
    EXPECT_EQ(progress_.steps[0].phase, WritePhase::writing);
    EXPECT_EQ(progress_.steps[1].phase, WritePhase::flushing);
    EXPECT_EQ(progress_.steps[2].phase, WritePhase::checking);
    for (const std::size_t counted : {std::size_t{0}, std::size_t{2}}) {
        EXPECT_EQ(progress_.steps[counted].bytes, all);
        EXPECT_EQ(progress_.steps[counted].done, (std::vector<std::uint64_t>{mebibyte, 2 * mebibyte, all}));
    }
}

TEST_F(WriteImage, TakesNoLongerThanItMay) {
    path_ = folder_.file("image", patternOf(3 * mebibyte, 3));
    const auto file = ImageFile::open(path_, rightsOf(::geteuid()).value(), {.inAll = std::chrono::seconds(2)});
    FakeDisk disk(patternOf(4 * mebibyte));
    disk.afterWrite = [] { ::usleep(1'100'000); };  // the disk is so slow
    const auto report = writeImage(file.value(), disk, 0, "sdb", progress_);
    EXPECT_NE(failure(report).find("the write took longer than an hour."), std::string::npos) << failure(report);
}

TEST_F(WriteImage, FailsWhenTheDiskDoesNotConfirm) {
    FakeDisk disk(patternOf(mebibyte));
    disk.flushResult = std::make_error_code(std::errc::io_error);
    const auto report = writeImage(image(patternOf(700, 3)), disk, 0, "sdb", progress_);
    EXPECT_NE(failure(report).find("did not confirm that it kept the bytes: Input/output error"), std::string::npos);
}

TEST_F(WriteImage, NoticesEveryByteThatTheDiskLost) {
    for (const std::size_t lost : {std::size_t{0}, mebibyte - 1, mebibyte, 2 * mebibyte + 699}) {
        FakeDisk disk(patternOf(4 * mebibyte, 7));
        const std::string bytes = patternOf(2 * mebibyte + 700, 3);
        disk.bytes[lost] = static_cast<char>(bytes[lost] ^ 1);
        disk.losesByteAt = lost;
        const auto report = writeImage(image(bytes), disk, 0, "sdb", progress_);
        EXPECT_NE(failure(report).find("holds other bytes than were written"), std::string::npos) << lost;
    }
}

TEST_F(WriteImage, NoticesThatItsNeighbourWasChanged) {
    FakeDisk disk(patternOf(mebibyte, 7));
    disk.afterFlush = [&disk] { disk.bytes[1000] = static_cast<char>(disk.bytes[1000] ^ 1); };
    const auto report = writeImage(image(patternOf(700, 3)), disk, 0, "sdb", progress_);
    EXPECT_NE(failure(report).find("holds other bytes than were written"), std::string::npos);
}

TEST_F(WriteImage, SaysWhereReadingBackFailed) {
    FakeDisk disk(patternOf(2 * mebibyte));
    disk.failsReadBackAt = mebibyte;
    const auto report = writeImage(image(patternOf(mebibyte + 1, 3)), disk, 0, "sdb", progress_);
    EXPECT_NE(failure(report).find("reading sdb back at block 2048: Input/output error"), std::string::npos);
}

TEST_F(WriteImage, DoesNotClaimAVerifiedWriteFromTheSystemsMemory) {
    FakeDisk disk(patternOf(8 * mebibyte));
    const ImageFile twoPieces = image(patternOf(mebibyte + 700, 3));
    for (const std::uint64_t cached : {std::uint64_t{1}, disk.size()}) {
        disk.cachedBelow = cached;
        const auto report = writeImage(twoPieces, disk, 0, "sdb", progress_);
        ASSERT_TRUE(report);
        EXPECT_FALSE(report.value().verified) << cached;
    }
}

TEST_F(WriteImage, FailsWhenTheImageGotShorterMeanwhile) {
    FakeDisk disk(patternOf(4 * mebibyte));
    const ImageFile file = image(patternOf(3 * mebibyte, 3));
    disk.afterWrite = [this] { std::filesystem::resize_file(path_, mebibyte + 1); };
    const auto report = writeImage(file, disk, 0, "sdb", progress_);
    EXPECT_NE(failure(report).find("the image got shorter while it was read. sdb was written up to block 2048."),
              std::string::npos)
        << failure(report);
}

TEST_F(WriteImage, FailsWhenTheImageGrewMeanwhile) {
    FakeDisk disk(patternOf(4 * mebibyte));
    const ImageFile file = image(patternOf(700, 3));
    disk.afterWrite = [this] { std::filesystem::resize_file(path_, 701); };
    EXPECT_NE(failure(writeImage(file, disk, 0, "sdb", progress_)).find("the image changed while it was being written"),
              std::string::npos);
}

TEST_F(WriteImage, FailsWhenTheImageBecameAnotherOneMeanwhile) {
    FakeDisk disk(patternOf(4 * mebibyte));
    const ImageFile file = image(patternOf(2 * mebibyte, 3));
    disk.afterWrite = [this] { folder_.file("image", patternOf(2 * mebibyte, 4)); };
    EXPECT_NE(failure(writeImage(file, disk, 0, "sdb", progress_)).find("the image changed while it was being written"),
              std::string::npos);
}

TEST_F(WriteImage, FailsWhenTheImageChangedInAnothersMemoryMeanwhile) {
    path_ = folder_.file("image", patternOf(2 * mebibyte, 3));
    const UniqueFd file(::open(path_.c_str(), O_RDWR | O_CLOEXEC));
    void* mapped = ::mmap(nullptr, 2 * mebibyte, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    ASSERT_NE(mapped, MAP_FAILED);
    auto* bytes = static_cast<char*>(mapped);
    bytes[5] = 'a';  // a page that was changed before is changed again without any trace in the file's times
    const auto image = ImageFile::open(path_, rightsOf(::geteuid()).value());
    FakeDisk disk(patternOf(4 * mebibyte));
    disk.afterWrite = [bytes] { bytes[5] = 'b'; };
    EXPECT_NE(failure(writeImage(image.value(), disk, 512, "sdb", progress_))
                  .find("the image changed while it was being written"),
              std::string::npos);
    ::munmap(mapped, 2 * mebibyte);
}

TEST_F(WriteImage, FailsWhenTheImageIsAnotherOneThanWasReadBefore) {
    path_ = folder_.file("image", patternOf(2 * mebibyte, 3));
    auto file = ImageFile::open(path_, rightsOf(::geteuid()).value());
    const auto read = CompleteImage::read(std::move(file.value()), std::nullopt, [](std::uint64_t) {});
    ASSERT_TRUE(read);
    folder_.file("image", patternOf(2 * mebibyte, 4));
    FakeDisk disk(patternOf(4 * mebibyte));
    EXPECT_NE(failure(writeImage(read.value(), disk, 512, "sdb", progress_))
                  .find("the image changed while it was being written"),
              std::string::npos);
}

TEST_F(WriteImage, NeedsNothingMoreOfAnImageThatIsComplete) {
    const std::string bytes = patternOf(2 * mebibyte + 1, 3);
    path_ = folder_.file("image", bytes);
    const PlacesInMemory places;
    auto file = ImageFile::open(path_, rightsOf(::geteuid()).value());
    const auto read = CompleteImage::read(std::move(file.value()), places.take(), [](std::uint64_t) {});
    ASSERT_TRUE(read);
    FakeDisk disk(patternOf(4 * mebibyte));
    disk.afterWrite = [this] { std::filesystem::resize_file(path_, 5); };
    const auto report = writeImage(read.value(), disk, 512, "sdb", progress_);
    EXPECT_TRUE(report) << failure(report);
    EXPECT_TRUE(disk.bytes.substr(512, bytes.size()) == bytes);
}

TEST_F(WriteImage, SucceedsWhenTheImageWasOnlyTouchedMeanwhile) {
    FakeDisk disk(patternOf(4 * mebibyte));
    const std::string bytes = patternOf(2 * mebibyte + 1, 3);
    const ImageFile file = image(bytes);
    disk.afterWrite = [this, &bytes] { folder_.file("image", bytes); };
    const auto report = writeImage(file, disk, 512, "sdb", progress_);
    EXPECT_TRUE(report) << failure(report);
}

}  // namespace
}  // namespace kestrav
