// Disks that are unplugged in the middle, or keep and give back other bytes than they were given.

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "services/gate/writeImage.h"
#include "services/image/ImageFile.h"
#include "tests/TemporaryFolder.h"
#include "tests/services/gate/FakeDisk.h"
#include "tests/services/gate/RecordingProgress.h"

namespace kestrav {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr std::size_t mebibyte = std::size_t{1} << 20U;
constexpr std::size_t imageSize = 3 * mebibyte;
constexpr std::uint64_t offset = 512;
const std::string kMixture =
    "The accessory's memory may hold a mixture now: unplug it, plug it in again and repeat the update.";

class BadDisk : public testing::Test {
  protected:
    /// The sentence of the failure, empty after a success.
    std::string failureOfWriting() {
        const auto file = ImageFile::open(folder_.file("image", image_), rightsOf(::geteuid()).value());
        const auto report = writeImage(file.value(), disk_, offset, "sdb", progress_);
        if (report) return {};
        EXPECT_EQ(report.problem().kind, Problem::Kind::failed);
        return report.problem().sentence;
    }
    /// From its beginning: whatever stands behind that is what was there.
    std::size_t arrived() const {
        const auto place = disk_.bytes.substr(offset, imageSize);
        std::size_t same = 0;
        while (same < imageSize && place[same] == image_[same])
            ++same;
        return same;
    }
    bool nothingElseChanged() const {
        return disk_.bytes.substr(0, offset) == before_.substr(0, offset) &&
               disk_.bytes.substr(offset + imageSize) == before_.substr(offset + imageSize);
    }
    bool isUntouched() const { return disk_.bytes == before_; }

    // Each byte differs from the image's in its place.
    static std::string inverted(std::string bytes) {
        for (char& byte : bytes)
            byte = static_cast<char>(~byte);
        return bytes;
    }

    const std::string image_ = patternOf(imageSize, 3);
    const std::string before_ = std::string(offset, 'a') + inverted(image_) + std::string(mebibyte, 'b');
    TemporaryFolder folder_;
    FakeDisk disk_{before_};
    RecordingProgress progress_;
};

class BadDiskPulledAt : public BadDisk, public testing::WithParamInterface<int> {};

TEST_P(BadDiskPulledAt, ThisPercentOfTheWriteSaysWhereItWas) {
    const std::size_t written = imageSize * static_cast<std::size_t>(GetParam()) / 100;
    disk_.pulledOnceWritten = written;
    const std::size_t piece = written / mebibyte;
    EXPECT_EQ(failureOfWriting(), "writing sdb from block " + std::to_string(1 + piece * mebibyte / 512) +
                                      " on: No such device. " + kMixture);
    EXPECT_EQ(arrived(), written);
    EXPECT_TRUE(nothingElseChanged());
}

INSTANTIATE_TEST_SUITE_P(Shares, BadDiskPulledAt, testing::Values(1, 50, 99),
                         [](const auto& row) { return "Percent" + std::to_string(row.param); });

TEST_F(BadDisk, PulledInTheFlushDidNotConfirm) {
    disk_.pulledInFlush = true;
    EXPECT_EQ(failureOfWriting(), "the disk sdb did not confirm that it kept the bytes: No such device. " + kMixture);
    EXPECT_TRUE(nothingElseChanged());
}

TEST_F(BadDisk, PulledInTheReadBackCannotBeChecked) {
    disk_.pulledInReadBack = true;
    EXPECT_EQ(failureOfWriting(), "reading sdb back at block 1: No such device. " + kMixture);
    EXPECT_EQ(arrived(), imageSize);
    EXPECT_TRUE(nothingElseChanged());
}

TEST_F(BadDisk, ThatSwallowsWritesInSilenceIsFoundOut) {
    disk_.swallowsWrites = true;
    EXPECT_EQ(failureOfWriting(),
              "sdb holds other bytes than were written, somewhere in the 2048 blocks from block 1 on. " + kMixture);
    EXPECT_TRUE(isUntouched());
}

TEST_F(BadDisk, ThatKeepsOneBitWronglyIsFoundOutAndTheNextWriteSetsItRight) {
    disk_.flipsOnWritingAt = offset + 2 * mebibyte + 7;
    EXPECT_EQ(failureOfWriting(),
              "sdb holds other bytes than were written, somewhere in the 2048 blocks from block 4097 on. " + kMixture);
    EXPECT_EQ(arrived(), 2 * mebibyte + 7);
    EXPECT_EQ(failureOfWriting(), "");
    EXPECT_EQ(arrived(), imageSize);
}

TEST_F(BadDisk, ThatKeepsABitWronglyEachTimeIsFoundOutEachTime) {
    disk_.flipsOnWritingAt = offset + imageSize - 1;
    disk_.flips = 2;
    for (int i = 0; i < 2; ++i)
        EXPECT_THAT(failureOfWriting(), StartsWith("sdb holds other bytes than were written")) << i;
}

TEST_F(BadDisk, ThatGivesOneBitBackWronglyIsNotTrustedThoughItHoldsTheImage) {
    disk_.flipsOnReadingAt = offset + 5;
    EXPECT_EQ(failureOfWriting(),
              "sdb holds other bytes than were written, somewhere in the 2048 blocks from block 1 on. " + kMixture);
    EXPECT_EQ(arrived(), imageSize);
    EXPECT_EQ(failureOfWriting(), "");
}

TEST_F(BadDisk, ThatGivesABitBackWronglyEachTimeIsNeverCalledVerified) {
    disk_.flipsOnReadingAt = offset + mebibyte;
    disk_.flips = 3;
    for (int i = 0; i < 3; ++i)
        EXPECT_THAT(failureOfWriting(), HasSubstr("holds other bytes than were written")) << i;
    EXPECT_TRUE(nothingElseChanged());
}

}  // namespace
}  // namespace kestrav
