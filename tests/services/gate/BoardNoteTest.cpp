#include <chrono>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "services/gate/BoardNote.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;

class BoardNoteTest : public testing::Test {
  protected:
    BoardNote note(uid_t user = 1000, pid_t asker = 4711) const { return {board_, {"sdb", user, asker, 1536}}; }
    std::string board() const { return contentsOf(board_ / "sdb.json"); }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(board_))
            found.push_back(entry.path().filename());
        return found;
    }
    void age(std::chrono::seconds by) const {
        const timespec then{std::time(nullptr) - by.count(), 0};
        const timespec times[] = {then, then};
        ASSERT_EQ(::utimensat(AT_FDCWD, (board_ / "sdb.json").c_str(), times, 0), 0);
    }
    /// Does `work` as another process, and waits for its end.
    template <class Work>
    void elsewhere(Work work) const {
        const pid_t child = ::fork();
        if (child == 0) {
            work();
            ::_exit(0);
        }
        ::waitpid(child, nullptr, 0);
    }

    TemporaryFolder folder_;
    const fs::path board_ = folder_.path() / "kestrav";
};

TEST_F(BoardNoteTest, SaysWhereTheWriteIs) {
    const auto before = std::time(nullptr);
    BoardNote writing = note();
    writing.begin();
    writing.measure(200000);
    writing.enter(WritePhase::writing, 200000);
    const std::string own = std::to_string(::getpid());
    EXPECT_THAT(board(), testing::StartsWith(R"({"version":1,"disk":"sdb","user":1000,"asker":4711,"writer":)" + own +
                                             R"(,"writerStart":)"));
    EXPECT_THAT(board(), HasSubstr(R"(,"firstBlock":1536,"bytes":200000,"phase":"writing","done":0,"of":200000,)"));
    EXPECT_THAT(board(), testing::EndsWith("}\n"));
    const std::string text = board();
    const auto begun = std::stoll(text.substr(text.find("\"begun\":") + 8));
    EXPECT_GE(begun, before);
    EXPECT_LE(begun, std::time(nullptr));
}

TEST_F(BoardNoteTest, SaysHowItEnded) {
    BoardNote writing = note();
    writing.begin();
    writing.end(WriteVerdict::failed);
    EXPECT_THAT(board(), HasSubstr(R"("phase":"done")"));
    EXPECT_THAT(board(), HasSubstr(R"("verdict":"failed"})"));
}

TEST_F(BoardNoteTest, IsReadableByAllUnderAnyMask) {
    const mode_t old = ::umask(077);
    BoardNote writing = note();
    writing.begin();
    writing.enter(WritePhase::writing, 1);
    ::umask(old);
    struct stat folder {};
    struct stat file {};
    struct stat lock {};
    ASSERT_EQ(::stat(board_.c_str(), &folder), 0);
    ASSERT_EQ(::stat((board_ / "sdb.json").c_str(), &file), 0);
    ASSERT_EQ(::stat((board_ / ".sdb.lock").c_str(), &lock), 0);
    EXPECT_EQ(folder.st_mode & 07777U, 0755U);
    EXPECT_EQ(file.st_mode & 07777U, 0644U);
    EXPECT_EQ(lock.st_mode & 07777U, 0600U) << "whoever can open it can lock it";
}

TEST_F(BoardNoteTest, IsReplacedAtMostTenTimesASecondWithinAPhase) {
    BoardNote writing = note();
    writing.begin();
    const auto start = std::chrono::steady_clock::now();
    writing.enter(WritePhase::writing, 1'000'000);
    std::string last = board();
    int changes = 0;
    for (std::uint64_t done = 1; std::chrono::steady_clock::now() - start < std::chrono::milliseconds(450); ++done) {
        writing.advance(done);
        if (board() == last) continue;
        last = board();
        ++changes;
    }
    const auto passed = std::chrono::steady_clock::now() - start;
    EXPECT_GE(changes, 1);
    EXPECT_LE(changes, passed / BoardNote::kPause);
}

TEST_F(BoardNoteTest, IsNeverHalfWritten) {
    BoardNote writing = note();
    writing.begin();
    writing.enter(WritePhase::writing, 9);
    const int open = ::open((board_ / "sdb.json").c_str(), O_RDONLY | O_CLOEXEC);
    const UniqueFd reader(open);
    writing.enter(WritePhase::flushing, 0);
    std::string seen(4096, '\0');
    seen.resize(static_cast<std::size_t>(::pread(open, seen.data(), seen.size(), 0)));
    EXPECT_THAT(seen, HasSubstr(R"("phase":"writing")")) << "the opened one was changed";
    EXPECT_THAT(board(), HasSubstr(R"("phase":"flushing")"));
    EXPECT_THAT(names(), testing::UnorderedElementsAre("sdb.json", ".sdb.lock"));
}

TEST_F(BoardNoteTest, OutlivesAWriterThatWasKilled) {
    elsewhere([this] {
        BoardNote writing = note();
        writing.begin();
        writing.enter(WritePhase::writing, 9);
        ::raise(SIGKILL);
    });
    EXPECT_THAT(board(), HasSubstr(R"("phase":"writing")"));
    BoardNote next = note(1001);
    next.begin();
    next.enter(WritePhase::reading, 9);
    EXPECT_THAT(board(), HasSubstr(R"("user":1001)"));
}

TEST_F(BoardNoteTest, IsTheWritersAloneUntilItEnds) {
    BoardNote writing = note();
    writing.begin();
    writing.enter(WritePhase::writing, 9);
    const std::string before = board();
    elsewhere([this] {
        BoardNote other = note();
        other.ask();
        other.end(WriteVerdict::refused);
        BoardNote another = note(0);
        another.begin();
        another.enter(WritePhase::unmounting, 0);
        another.end(WriteVerdict::refused);
    });
    EXPECT_EQ(board(), before);
}

TEST_F(BoardNoteTest, IsTakenOverWhenTheFirstWriterHasEnded) {
    BoardNote first = note();
    first.begin();
    first.enter(WritePhase::writing, 9);
    BoardNote second = note(1001);
    second.begin();
    second.enter(WritePhase::unmounting, 0);
    first.end(WriteVerdict::wrote);
    EXPECT_THAT(board(), HasSubstr(R"("verdict":"wrote")"));
    second.enter(WritePhase::writing, 9);
    EXPECT_THAT(board(), HasSubstr(R"("user":1001)"));
}

TEST_F(BoardNoteTest, SaysThatSomebodyIsAskedAndWhatCameOfIt) {
    BoardNote asking = note();
    asking.ask();
    EXPECT_THAT(board(), HasSubstr(R"("phase":"asking")"));
    asking.end(WriteVerdict::refused);
    EXPECT_THAT(board(), HasSubstr(R"("verdict":"refused")"));
}

TEST_F(BoardNoteTest, LosesNoOutcomeToAnotherUsersQuestion) {
    BoardNote writing = note(1000);
    writing.begin();
    writing.end(WriteVerdict::wrote);
    const std::string before = board();
    elsewhere([this] {
        BoardNote asking = note(1001);
        asking.ask();
        asking.end(WriteVerdict::refused);
    });
    EXPECT_EQ(board(), before);
    elsewhere([this] { note(1000).ask(); });
    EXPECT_NE(board(), before) << "a user's own question is news to that user";
}

TEST_F(BoardNoteTest, LosesAnOldOutcomeToAQuestion) {
    BoardNote writing = note(1000);
    writing.begin();
    writing.end(WriteVerdict::wrote);
    age(BoardNote::kOutcomeIsKept - std::chrono::minutes(1));
    elsewhere([this] { note(1001).ask(); });
    EXPECT_THAT(board(), HasSubstr(R"("user":1000)"));
    age(BoardNote::kOutcomeIsKept);
    elsewhere([this] { note(1001).ask(); });
    EXPECT_THAT(board(), HasSubstr(R"("user":1001)"));
}

TEST_F(BoardNoteTest, SaysNothingWhereOthersCouldWrite) {
    fs::create_directory(board_);
    ASSERT_EQ(::chmod(board_.c_str(), 0777), 0);
    BoardNote writing = note();
    writing.begin();
    writing.end(WriteVerdict::wrote);
    EXPECT_THAT(names(), IsEmpty());
}

TEST_F(BoardNoteTest, FollowsNoLink) {
    const TemporaryFolder other;
    fs::create_directory_symlink(other.path(), board_);
    BoardNote writing = note();
    writing.begin();
    writing.end(WriteVerdict::wrote);
    EXPECT_THAT(names(), IsEmpty());
    fs::remove(board_);
    fs::create_directory(board_);
    const std::string victim = other.file("victim", "kept");
    for (const char* name : {"sdb.json", ".sdb.json.new"})
        fs::create_symlink(victim, board_ / name);
    BoardNote again = note();
    again.begin();
    again.end(WriteVerdict::wrote);
    EXPECT_EQ(contentsOf(victim), "kept");
}

TEST_F(BoardNoteTest, NeedsNoPlace) {
    for (const fs::path& place : {fs::path(), folder_.path() / "missing" / "kestrav", fs::path("/proc/kestrav")}) {
        BoardNote writing(place, {"sdb", 0, 0, 0});
        writing.ask();
        writing.begin();
        writing.enter(WritePhase::writing, 9);
        writing.advance(9);
        writing.end(WriteVerdict::wrote);
    }
    BoardNote none;
    none.begin();
    none.end(WriteVerdict::wrote);
    EXPECT_FALSE(fs::exists(folder_.path() / "missing"));
}

TEST_F(BoardNoteTest, TakesAwayWhatItCannotReplace) {
    BoardNote writing = note();
    writing.begin();
    writing.enter(WritePhase::writing, 9);
    // No next file can be made under this name.
    fs::create_directory(board_ / ".sdb.json.new");
    writing.end(WriteVerdict::wrote);
    EXPECT_FALSE(fs::exists(board_ / "sdb.json")) << board();
}

/// What this thread has used; unlike the time of day it is the same beside other programs.
std::chrono::nanoseconds processorTime() {
    timespec used{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

TEST_F(BoardNoteTest, CostsAWriteNothingThatCouldBeMeasured) {
    BoardNote writing = note();
    writing.begin();
    const auto start = processorTime();
    for (const WritePhase phase : {WritePhase::reading, WritePhase::writing, WritePhase::checking}) {
        writing.enter(phase, std::uint64_t{64} << 20U);
        for (std::uint64_t piece = 1; piece <= 64; ++piece)
            writing.advance(piece << 20U);
    }
    writing.end(WriteVerdict::wrote);
    // 64 MiB take a second on a fast accessory.
    EXPECT_LT(processorTime() - start, std::chrono::milliseconds(100));
}

}  // namespace
}  // namespace kestrav
