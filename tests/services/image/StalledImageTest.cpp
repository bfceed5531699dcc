// Images on a file system that fails or stops answering: a network's or a user's own. Needs root.

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/wait.h>

#include "base/UniqueFd.h"
#include "services/disk/AlignedBuffer.h"
#include "services/disk/NodeBytes.h"
#include "services/gate/writeImage.h"
#include "services/image/CompleteImage.h"
#include "services/image/ImageFile.h"
#include "tests/TemporaryFolder.h"
#include "tests/services/SlowFolder.h"
#include "tests/services/gate/FakeDisk.h"
#include "tests/services/gate/RecordingProgress.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

constexpr std::size_t mebibyte = std::size_t{1} << 20U;
constexpr ImagePatience shortPatience{.toOpen = 300ms, .toRead = 300ms};

class StalledImage : public testing::Test {
  protected:
    void SetUp() override {
        if (!SlowFolder::isPossible()) GTEST_SKIP() << "needs root and a kernel with FUSE";
    }
    void TearDown() override {
        slow_.reset();
        // Those left behind can end now.
        while (::waitpid(-1, nullptr, 0) > 0) {
        }
    }

    Outcome<ImageFile> open(const SlowFolder::Behaviour& behaviour) {
        slow_.reset();
        slow_.emplace(folder_.path(), behaviour);
        return ImageFile::open(slow_->image(), rightsOf(0).value(), shortPatience);
    }
    std::string failureOfWriting(const SlowFolder::Behaviour& behaviour) {
        auto image = open(behaviour);
        if (!image) return image.problem().sentence;
        const auto report = writeImage(image.value(), disk_, 512, "sdb", progress_);
        return report ? std::string() : report.problem().sentence;
    }

    TemporaryFolder folder_;
    std::optional<SlowFolder> slow_;
    const std::string before_ = patternOf(4 * mebibyte, 7);
    FakeDisk disk_{before_};
    RecordingProgress progress_;
};

TEST_F(StalledImage, IsWrittenWhileItsFileSystemAnswers) {
    EXPECT_EQ(failureOfWriting({.size = 2 * mebibyte}), "");
    EXPECT_TRUE(disk_.bytes.substr(512, 2 * mebibyte) == std::string(2 * mebibyte, '\0'));
}

TEST_F(StalledImage, IsRefusedWhenItCannotBeOpened) {
    const auto image = open({.size = mebibyte, .answersOpening = false});
    ASSERT_FALSE(image);
    EXPECT_EQ(image.problem().kind, Problem::Kind::refused);
    EXPECT_EQ(image.problem().sentence, "the image " + slow_->image() +
                                            " can't be opened: its file system does not answer. Copy it to another "
                                            "disk first.");
}

TEST_F(StalledImage, IsGivenUpBeforeAByteIsWritten) {
    EXPECT_THAT(failureOfWriting({.size = 2 * mebibyte, .stallsFrom = 0}),
                HasSubstr("the file system of the image stopped answering. Nothing was written."));
    EXPECT_TRUE(disk_.bytes == before_);
}

TEST_F(StalledImage, IsGivenUpInTheMiddle) {
    EXPECT_THAT(failureOfWriting({.size = 3 * mebibyte, .stallsFrom = mebibyte + 5}),
                HasSubstr("the file system of the image stopped answering. sdb was written up to block 2049."));
    EXPECT_TRUE(disk_.bytes.substr(512 + mebibyte) == before_.substr(512 + mebibyte));
}

TEST_F(StalledImage, ThatCannotBeReadInTheMiddleIsAFailure) {
    EXPECT_THAT(failureOfWriting({.size = 3 * mebibyte, .failsFrom = mebibyte + 5}),
                HasSubstr("reading the image: Input/output error. sdb was written up to block 2049. The accessory's "
                          "memory may hold a mixture now: unplug it, plug it in again and repeat the update."));
    EXPECT_TRUE(disk_.bytes.substr(512 + mebibyte) == before_.substr(512 + mebibyte));
}

TEST_F(StalledImage, ThatCannotBeReadAtAllLeavesTheDiskAsItIs) {
    EXPECT_THAT(failureOfWriting({.size = mebibyte, .failsFrom = 0}),
                HasSubstr("reading the image: Input/output error. Nothing was written."));
    EXPECT_TRUE(disk_.bytes == before_);
}

TEST_F(StalledImage, IsReadBeforeTheDiskIsTouched) {
    for (const auto& behaviour : {SlowFolder::Behaviour{.size = 3 * mebibyte, .stallsFrom = 2 * mebibyte + 5},
                                  SlowFolder::Behaviour{.size = CompleteImage::kMostInMemory + mebibyte,
                                  .stallsFrom = CompleteImage::kMostInMemory + 5}}) {
        auto file = open(behaviour);
        ASSERT_TRUE(file);
        const auto image = CompleteImage::read(std::move(file.value()), PlacesInMemory().take(), [](std::uint64_t) {});
        ASSERT_FALSE(image);
        EXPECT_EQ(image.problem().sentence, "the file system of the image stopped answering. Nothing was written.");
    }
}

TEST_F(StalledImage, ThatIsADiskWithADamagedMemorySaysSo) {
    const auto file = open({.size = 3 * mebibyte, .failsFrom = 0, .failsWith = ENODATA});
    ASSERT_TRUE(file);
    NodeBytes bytes(UniqueFd(::open(slow_->image().c_str(), O_RDONLY | O_CLOEXEC)), 3 * mebibyte, 512);
    AlignedBuffer buffer(4096);
    const auto got = bytes.read(0, buffer.first(512));
    ASSERT_FALSE(got);
    EXPECT_EQ(got.problem().sentence, "its memory is damaged there.");
}

}  // namespace
}  // namespace kestrav
