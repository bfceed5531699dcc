// Images on a file system that fails or stops answering: a network's or a user's own. Needs root.

#include <chrono>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/wait.h>

#include "services/privileged/DiskWriter.h"
#include "tests/TemporaryFolder.h"
#include "tests/services/SlowFolder.h"
#include "tests/services/privileged/FakeDisk.h"

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
        slow_.emplace(folder_.path(), behaviour);
        return ImageFile::open(slow_->image(), callerWithUid(0).value(), shortPatience);
    }
    std::string failureOfWriting(const SlowFolder::Behaviour& behaviour) {
        auto image = open(behaviour);
        if (!image) return image.problem().sentence;
        const auto report = writeImage(image.value(), disk_, 512, "sdb");
        return report ? std::string() : report.problem().sentence;
    }

    TemporaryFolder folder_;
    std::optional<SlowFolder> slow_;
    const std::string before_ = patternOf(4 * mebibyte, 7);
    FakeDisk disk_{before_};
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

}  // namespace
}  // namespace kestrav
