#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/StagedFile.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text));
}

class Staged : public testing::Test {
  protected:
    TemporaryFolder folder_;
    fs::path place_ = folder_.file("place", "old");

    UniqueFd opened() const { return UniqueFd(::open(folder_.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)); }
    std::ptrdiff_t files() const { return std::distance(fs::directory_iterator(folder_.path()), {}); }
};

TEST_F(Staged, TakesItsPlaceWhenToldTo) {
    for (const bool inFolder : {false, true}) {
        auto staged = inFolder ? StagedFile::in(opened(), "place") : StagedFile::beside(place_);
        ASSERT_TRUE(staged);
        const std::string contents = inFolder ? "in" : "beside";
        ASSERT_TRUE(staged.value().fill(bytesOf(contents), 0751));
        EXPECT_NE(contentsOf(place_), contents);
        ASSERT_TRUE(staged.value().putInPlace());
        EXPECT_EQ(contentsOf(place_), contents);
        EXPECT_EQ(fs::status(place_).permissions(), fs::perms(0751));
    }
    EXPECT_EQ(files(), 1);
}

TEST_F(Staged, GoesAwayWhenItWasNotPutInPlace) {
    {
        auto first = StagedFile::in(opened(), "place");
        ASSERT_TRUE(first);
        ASSERT_TRUE(first.value().fill(bytesOf("new"), 0644));
        const StagedFile moved = std::move(first.value());
        EXPECT_TRUE(fs::exists(folder_.path() / ".place.new"));
    }
    EXPECT_EQ(files(), 1);
    EXPECT_EQ(contentsOf(place_), "old");
}

/// Killed with the new file complete, before it takes its place.
[[noreturn]] void stageAndBeKilled(UniqueFd folder) {
    auto staged = StagedFile::in(std::move(folder), "place");
    if (!staged || !staged.value().fill(bytesOf("new"), 0644)) std::_Exit(1);
    ::raise(SIGKILL);
    std::_Exit(2);
}

TEST_F(Staged, LeavesTheOldFileWhenItIsKilledAndTheNextOneClearsUp) {
    EXPECT_EXIT(stageAndBeKilled(opened()), testing::KilledBySignal(SIGKILL), "");
    EXPECT_EQ(contentsOf(place_), "old");
    EXPECT_EQ(contentsOf(folder_.path() / ".place.new"), "new");
    auto next = StagedFile::in(opened(), "place");
    ASSERT_TRUE(next);
    ASSERT_TRUE(next.value().fill(bytesOf("newer"), 0644));
    ASSERT_TRUE(next.value().putInPlace());
    EXPECT_EQ(contentsOf(place_), "newer");
    EXPECT_EQ(files(), 1);
}

TEST_F(Staged, DoesNotFollowALinkThatIsLeftInItsWay) {
    const std::string victim = folder_.file("victim", "untouched");
    fs::create_symlink(victim, folder_.path() / ".place.new");
    auto staged = StagedFile::in(opened(), "place");
    ASSERT_TRUE(staged);
    ASSERT_TRUE(staged.value().fill(bytesOf("new"), 0644));
    EXPECT_EQ(contentsOf(victim), "untouched");
}

TEST_F(Staged, SaysWhyItCannotBeMade) {
    const auto beside = StagedFile::beside(folder_.path() / "missing" / "place");
    ASSERT_FALSE(beside);
    EXPECT_EQ(beside.problem().cause, std::errc::no_such_file_or_directory);
    EXPECT_EQ(beside.problem().sentence, "No such file or directory.");
    fs::create_directory(folder_.path() / ".place.new");
    const auto in = StagedFile::in(opened(), "place");
    ASSERT_FALSE(in);
    EXPECT_EQ(in.problem().cause, std::errc::file_exists);
}

TEST_F(Staged, SaysWhyItCannotTakeItsPlace) {
    fs::create_directory(folder_.path() / "folder");
    auto staged = StagedFile::beside(folder_.path() / "folder");
    ASSERT_TRUE(staged);
    ASSERT_TRUE(staged.value().fill(bytesOf("new"), 0644));
    const auto placed = staged.value().putInPlace();
    ASSERT_FALSE(placed);
    EXPECT_EQ(placed.problem().cause, std::errc::is_a_directory);
}

}  // namespace
}  // namespace kestrav
