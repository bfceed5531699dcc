#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string_view>

#include "base/wholeFile.h"
#include "tests/TemporaryFolder.h"
#include "tests/base/flushFaults.h"

namespace kestrav {
namespace {

using ::testing::ElementsAre;

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text));
}

class Flushing : public ::testing::Test {
  protected:
    void SetUp() override { flushFaults() = {}; }
    void TearDown() override { flushFaults() = {}; }

    TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.file("file", "old");
};

TEST_F(Flushing, ComesBeforeAFileIsReplaced) {
    ASSERT_TRUE(replaceFile(file_, bytesOf("new"), 0644));
    EXPECT_THAT(flushFaults().flushed, ElementsAre("file"));
    EXPECT_EQ(contentsOf(file_), "new");
}

TEST_F(Flushing, LeavesTheOldFileWhenTheDiskDoesNotKeepTheNewOne) {
    flushFaults().error = EIO;
    const auto replaced = replaceFile(file_, bytesOf("new"), 0644);
    ASSERT_FALSE(replaced);
    EXPECT_EQ(replaced.problem().cause, std::errc::io_error);
    EXPECT_EQ(contentsOf(file_), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), 1);
}

TEST_F(Flushing, OfAFolderIsWhatTheDiskSays) {
    EXPECT_TRUE(syncFolder(folder_.path()));
    EXPECT_THAT(flushFaults().flushed, ElementsAre("folder"));
    flushFaults().error = EIO;
    const auto synced = syncFolder(folder_.path());
    ASSERT_FALSE(synced);
    EXPECT_EQ(synced.problem().cause, std::errc::io_error);
    EXPECT_FALSE(syncFolder(folder_.path() / "missing"));
}

}  // namespace
}  // namespace kestrav
