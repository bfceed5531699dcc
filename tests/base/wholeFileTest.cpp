#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "base/StagedFile.h"
#include "base/UniqueFd.h"
#include "base/wholeFile.h"
#include "tests/TemporaryFolder.h"
#include "tests/socket/SignalShower.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

std::span<const std::byte> bytesOf(std::string_view text) {
    return std::as_bytes(std::span(text));
}

std::error_code causeOf(const auto& outcome) {
    return outcome ? std::error_code() : outcome.problem().cause;
}

class WholeFile : public testing::Test {
  protected:
    TemporaryFolder folder_;
    fs::path file_ = folder_.path() / "file";

    std::ptrdiff_t filesInFolder() const { return std::distance(fs::directory_iterator(folder_.path()), {}); }
};

using ReadWholeFile = WholeFile;
using ReadAt = WholeFile;
using WriteAll = WholeFile;
using ReplaceFile = WholeFile;
using SyncFolder = WholeFile;

TEST_F(ReadWholeFile, GivesTheBytesUpToTheLimit) {
    const std::string contents = patternOf(100'000);
    folder_.file("file", contents);
    EXPECT_EQ(readWholeFile(file_, contents.size()).value(), contents);
    const auto tooLong = readWholeFile(file_, contents.size() - 1);
    EXPECT_EQ(causeOf(tooLong), std::errc::file_too_large);
    EXPECT_EQ(tooLong.problem().sentence, "File too large.");
}

TEST_F(ReadWholeFile, TellsWhatIsNoFile) {
    EXPECT_EQ(causeOf(readWholeFile(file_, 10)), std::errc::no_such_file_or_directory);
    EXPECT_EQ(causeOf(readWholeFile(folder_.path(), 10)), std::errc::is_a_directory);
    ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
    EXPECT_EQ(causeOf(readWholeFile(file_, 10)), std::errc::invalid_argument);  // and does not wait for a writer
}

TEST_F(ReadAt, FillsWhatTheFileHas) {
    const UniqueFd file(::open(folder_.file("file", "0123456789").c_str(), O_RDONLY | O_CLOEXEC));
    std::array<char, 6> into{};
    EXPECT_EQ(readAt(file.get(), std::as_writable_bytes(std::span(into)), 2).value(), 6U);
    EXPECT_EQ(std::string_view(into.data(), 6), "234567");
    EXPECT_EQ(readAt(file.get(), std::as_writable_bytes(std::span(into)), 8).value(), 2U);
    EXPECT_EQ(std::string_view(into.data(), 2), "89");
    EXPECT_EQ(readAt(file.get(), std::as_writable_bytes(std::span(into)), 10).value(), 0U);
}

TEST_F(ReadAt, SaysWhyItCannotRead) {
    const UniqueFd folder(::open(folder_.path().c_str(), O_RDONLY | O_CLOEXEC));
    std::array<std::byte, 4> into{};
    EXPECT_EQ(causeOf(readAt(folder.get(), into, 0)), std::errc::is_a_directory);
}

TEST_F(WriteAll, GoesOnWhenAPipeTakesLessAndWhenItIsInterrupted) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const UniqueFd reader(ends[0]);
    UniqueFd writer(ends[1]);
    const std::string contents = patternOf(1'000'000);
    const SignalShower shower;
    std::string read;
    std::thread slow([&] {
        // By then the pipe has been full for a while: the first call wrote a part, later ones were interrupted.
        while (shower.interruptions() < 10)
            std::this_thread::yield();
        std::array<char, 4096> piece{};
        for (ssize_t got = 1; got > 0;) {
            got = ::read(reader.get(), piece.data(), piece.size());
            if (got > 0) read.append(piece.data(), static_cast<std::size_t>(got));
        }
    });
    EXPECT_TRUE(writeAll(writer.get(), bytesOf(contents)));
    writer.reset();
    slow.join();
    EXPECT_TRUE(read == contents);
}

TEST_F(WriteAll, SaysThatTheDiskIsFull) {
    const UniqueFd full(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    const auto written = writeAll(full.get(), bytesOf("x"));
    EXPECT_EQ(causeOf(written), std::errc::no_space_on_device);
    EXPECT_EQ(written.problem().sentence, "No space left on device.");
    EXPECT_EQ(causeOf(writeAllAt(full.get(), bytesOf("x"), 7)), std::errc::no_space_on_device);
    EXPECT_TRUE(writeAll(full.get(), {}));
}

TEST_F(WriteAll, WritesAtAPlace) {
    folder_.file("file", "0123456789");
    const UniqueFd file(::open(file_.c_str(), O_WRONLY | O_CLOEXEC));
    EXPECT_TRUE(writeAllAt(file.get(), bytesOf("abc"), 4));
    EXPECT_EQ(contentsOf(file_), "0123abc789");
}

TEST_F(ReplaceFile, MakesOrReplacesItWithItsRights) {
    for (const mode_t mode : {mode_t{0640}, kOwnerAlone}) {
        const std::string contents = "for " + std::to_string(mode);
        ASSERT_TRUE(replaceFile(file_, bytesOf(contents), mode));
        EXPECT_EQ(contentsOf(file_), contents);
        EXPECT_EQ(fs::status(file_).permissions(), fs::perms(mode));
    }
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(ReplaceFile, WritesBesideARelativeName) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    const auto replaced = replaceFile("file", bytesOf("here"), 0644);
    fs::current_path(before);
    EXPECT_TRUE(replaced);
    EXPECT_EQ(contentsOf(file_), "here");
}

TEST_F(ReplaceFile, SaysWhichStepFailed) {
    const auto nowhere = replaceFile(folder_.path() / "missing" / "file", bytesOf("x"), 0644);
    EXPECT_EQ(causeOf(nowhere), std::errc::no_such_file_or_directory);
    EXPECT_EQ(nowhere.problem().sentence,
              "Could not create a file in " + (folder_.path() / "missing").string() + ": No such file or directory.");
    fs::create_directory(file_);
    const auto folder = replaceFile(file_, bytesOf("x"), 0644);
    EXPECT_EQ(causeOf(folder), std::errc::is_a_directory);
    EXPECT_EQ(folder.problem().sentence, "Could not replace " + file_.string() + ": Is a directory.");
    EXPECT_EQ(filesInFolder(), 1);
}

/// Ends with 0 when a file that can't grow beyond `room`, as on a full disk, is not replaced for that reason.
[[noreturn]] void replaceWithoutRoom(const fs::path& file, rlim_t room) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{room, room};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const std::string contents(1000, 'x');
    const auto replaced = replaceFile(file, bytesOf(contents), 0644);
    const bool told = causeOf(replaced) == std::errc::file_too_large &&
                      replaced.problem().sentence == "Could not write " + file.string() + ": File too large.";
    std::_Exit(told ? 0 : 1);
}

TEST_F(ReplaceFile, LeavesWhatWasThereWhenThereIsNoRoom) {
    folder_.file("file", "old");
    EXPECT_EXIT(replaceWithoutRoom(file_, 100), testing::ExitedWithCode(0), "");
    EXPECT_EQ(contentsOf(file_), "old");
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(SyncFolder, SaysWhyItCannot) {
    EXPECT_TRUE(syncFolder(folder_.path()));
    EXPECT_EQ(causeOf(syncFolder(file_)), std::errc::no_such_file_or_directory);
    EXPECT_EQ(causeOf(syncFolder("/proc")), std::errc::invalid_argument);  // which has nothing to bring to a disk
}

}  // namespace
}  // namespace kestrav
