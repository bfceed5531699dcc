#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>
#include <unistd.h>

#include "outcome/WriteWatch.h"
#include "outcome/writtenSectors.h"
#include "tests/TemporaryFolder.h"
#include "tests/eventually.h"

namespace kestrav {
namespace {

using Texts = std::vector<std::string>;

std::uint64_t ownStart() {
    std::ifstream stat("/proc/self/stat");
    std::string line;
    std::getline(stat, line);
    std::istringstream rest(line.substr(line.rfind(')') + 2));
    std::string field;
    for (int number = 3; number <= 22; ++number)
        rest >> field;
    return std::stoull(field);
}

/// A process that has ended, and been taken note of.
pid_t endedProcess() {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    ::waitpid(child, nullptr, 0);
    return child;
}

/// What stands on the board of a write, beside how far it is.
struct Note {
    std::string more = {};
    int begun = 2000;
    pid_t writer = ::getpid();
    std::uint64_t writerStart = ownStart();
    uid_t user = ::geteuid();
    pid_t asker = ::getpid();
};

class TheWatch : public testing::Test {
  protected:
    void post(std::string_view phase, std::uint64_t done, const Note& note = {}) const {
        const std::string fresh = folder_.path() / "new";
        std::ofstream(fresh) << R"({"version":1,"disk":"sdzz","user":)" << note.user << R"(,"asker":)" << note.asker
                             << R"(,"writer":)" << note.writer << R"(,"writerStart":)" << note.writerStart
                             << R"(,"firstBlock":1536,"bytes":1000,"phase":")" << phase << R"(","done":)" << done
                             << R"(,"of":1000,"begun":)" << note.begun << note.more << "}";
        std::filesystem::rename(fresh, folder_.path() / "sdzz.json");
    }
    /// The phase that is told to whoever asked while `before` stood on the board, and `now` stands there since.
    WritePhase phaseTold(const Note& before, const Note& now) {
        post("writing", 300, before);
        WriteWatch watch(answers_, {}, board());
        ask(watch);
        post("writing", 400, now);
        return watch.state()->phase;
    }
    void ask(WriteWatch& watch) const { watch.asked("dd", Texts{"if=/a", "of=/dev/rsdzz", "seek=1536", "bs=512"}); }

    /// What the watch has shown so far.
    std::vector<WriteState> shown() {
        const std::scoped_lock lock(mutex_);
        return shown_;
    }
    WriteWatch::Show show() {
        return [this](const WriteState& state) {
            const std::scoped_lock lock(mutex_);
            shown_.push_back(state);
        };
    }
    BoardReader board() const { return BoardReader(std::vector{folder_.path()}); }

    ServiceAnswers answers_;
    int waited_ = 0;
    const std::function<void()> waits_ = [this] { ++waited_; };

  private:
    TemporaryFolder folder_;
    std::mutex mutex_;
    std::vector<WriteState> shown_;
};

TEST_F(TheWatch, PassesOnWhatIsAskedAndAnswered) {
    WriteWatch watch(answers_, {}, board());
    ask(watch);
    watch.answered("Refused: no.");
    ask(watch);
    watch.unanswered({Unanswered::Why::notAccepted, "Nobody."});
    ASSERT_EQ(answers_.exchanges().size(), 2U);
    EXPECT_EQ(std::get<ServiceAnswers::Given>(answers_.exchanges()[0].end).answer.meaning, Answer::Meaning::refused);
    EXPECT_EQ(std::get<Unanswered>(answers_.exchanges()[1].end).why, Unanswered::Why::notAccepted);
}

TEST_F(TheWatch, ShowsHowTheWriteGoesOnAndNoOther) {
    WriteWatch watch(answers_, show(), board());
    post("done", 1000, {.more = R"(,"verdict":"failed")", .begun = 1000});
    ask(watch);
    EXPECT_EQ(shown(), (std::vector<WriteState>{{"sdzz", WritePhase::asking}}));
    post("writing", 400);
    EXPECT_TRUE(eventually([&] { return shown().back().done == 400; }));
    EXPECT_EQ(shown().size(), 2U) << "the write before was shown, too";
    EXPECT_EQ(shown().back().phase, WritePhase::writing);
    post("writing", 900);
    EXPECT_TRUE(eventually([&] { return shown().back().done == 900 && shown().back().bytesASecond > 0; }));
    EXPECT_EQ(watch.state()->done, 900U);
    watch.answered("Wrote.");
    EXPECT_EQ(watch.state(), std::nullopt);
}

TEST_F(TheWatch, TakesTheWriteBeforeForNoPartOfThisOne) {
    WriteWatch watch(answers_, {}, board());
    post("done", 1000, {.more = R"(,"verdict":"wrote")", .begun = 1000});
    ask(watch);
    EXPECT_EQ(watch.state()->phase, WritePhase::asking);
    watch.unanswered({Unanswered::Why::noReplyInTime, ""});
    EXPECT_EQ(watch.follow(waits_), WriteWatch::End::unknown);
}

TEST_F(TheWatch, LeavesTheWriteOfSomebodyElseAlone) {
    WriteWatch watch(answers_, {}, board());
    watch.asked("dd", Texts{"if=/a", "of=/dev/rsdzz", "seek=77", "bs=512"});
    post("writing", 400);
    EXPECT_EQ(watch.state()->phase, WritePhase::asking);
    watch.unanswered({Unanswered::Why::noReplyInTime, ""});
    EXPECT_EQ(watch.follow(waits_), WriteWatch::End::unknown);
}

TEST_F(TheWatch, TellsAWriteFromTheOneBefore) {
    EXPECT_EQ(phaseTold({}, {}), WritePhase::asking) << "it goes on";
    EXPECT_EQ(phaseTold({.begun = 1999}, {}), WritePhase::writing);
    // Two of one second are of two processes, which may have had the same number.
    EXPECT_EQ(phaseTold({.writer = endedProcess()}, {}), WritePhase::writing);
    EXPECT_EQ(phaseTold({.writerStart = 1}, {}), WritePhase::writing);
}

TEST_F(TheWatch, TakesOnlyAWriteOfItsOwn) {
    const Note before{.begun = 1999};
    EXPECT_EQ(phaseTold(before, {.user = ::geteuid() + 1}), WritePhase::asking);
    EXPECT_EQ(phaseTold(before, {.asker = ::getpid() + 1}), WritePhase::asking);
    EXPECT_EQ(phaseTold(before, {.asker = 0}), WritePhase::writing) << "the service need not know who asked";
}

TEST_F(TheWatch, WatchesNoUnmounting) {
    WriteWatch watch(answers_, show(), board());
    watch.asked("umount", Texts{"/dev/sdzzs1"});
    EXPECT_EQ(watch.state(), std::nullopt);
    EXPECT_TRUE(shown().empty());
}

TEST_F(TheWatch, FollowsAWriteWithoutAnAnswerToItsEnd) {
    int begun = 3000;
    for (const auto& [verdict, end] :
         {std::pair("wrote", WriteWatch::End::wrote), std::pair("refused", WriteWatch::End::refused),
          std::pair("failed", WriteWatch::End::failed)}) {
        WriteWatch watch(answers_, show(), board());
        ask(watch);
        watch.unanswered({Unanswered::Why::noReplyInTime, ""});
        post("checking", 500, {.begun = ++begun});
        const std::size_t before = shown().size();
        std::thread service([&, said = std::string(verdict)] {
            eventually([&] { return shown().size() > before; });
            post("done", 1000, {.more = R"(,"verdict":")" + said + "\"", .begun = begun});
        });
        waited_ = 0;
        EXPECT_EQ(watch.follow(waits_), end) << verdict;
        service.join();
        EXPECT_EQ(waited_, 1);
        EXPECT_EQ(shown().back().phase, WritePhase::checking);
        EXPECT_EQ(watch.state(), std::nullopt);
    }
}

TEST_F(TheWatch, KnowsWhenWhoWroteIsGone) {
    WriteWatch watch(answers_, {}, board());
    ask(watch);
    watch.unanswered({Unanswered::Why::closedWithoutAReply, ""});
    post("writing", 500, {.writer = endedProcess()});
    EXPECT_EQ(watch.follow(waits_), WriteWatch::End::died);
    post("done", 1000, {.more = R"(,"verdict":"wrote")", .writer = endedProcess()});
    EXPECT_EQ(watch.follow(waits_), WriteWatch::End::wrote);
}

TEST_F(TheWatch, KnowsNothingWithoutABoard) {
    WriteWatch watch(answers_, {}, board());
    ask(watch);
    watch.unanswered({Unanswered::Why::noReplyInTime, ""});
    EXPECT_EQ(watch.follow(waits_), WriteWatch::End::unknown);
    EXPECT_EQ(waited_, 0) << "there is nothing to wait for";
}

TEST_F(TheWatch, CountsWithTheKernelWhereThereIsNoBoard) {
    const TemporaryFolder disks;
    std::filesystem::create_directory(disks.path() / "sdzz");
    const auto count = [&](int sectors) {
        disks.file("sdzz/stat", "1 0 8 5 2 1 " + std::to_string(sectors) + " 7 0\n");
    };
    count(100);
    WriteWatch watch(answers_, {}, board(), disks.path());
    watch.expect(2048);
    ask(watch);
    EXPECT_EQ(watch.state(), (WriteState{"sdzz", WritePhase::asking}));
    count(102);
    EXPECT_EQ(watch.state(), (WriteState{"sdzz", WritePhase::writing, 1024, 2048}));
    count(200);
    EXPECT_EQ(watch.state()->done, 2048U) << "somebody else wrote, too";
    post("checking", 5);
    EXPECT_EQ(watch.state()->phase, WritePhase::checking) << "a board knows better";
}

TEST(WrittenSectors, AreTheSeventhNumberOfTheKernelsLine) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "sdb");
    std::ofstream(folder.path() / "sdb" / "stat") << "  10  0  80  5  20  1  4096  7  0  3  12\n";
    EXPECT_EQ(writtenSectors("sdb", folder.path()), 4096U);
    EXPECT_EQ(writtenSectors("sdc", folder.path()), std::nullopt);
    EXPECT_EQ(writtenSectors("../sdb", folder.path() / "sdb"), std::nullopt);
    EXPECT_EQ(writtenSectors("sdb/../sdb", folder.path()), std::nullopt);
    EXPECT_EQ(writtenSectors("/" + (folder.path() / "sdb").string(), "/"), std::nullopt);
    EXPECT_EQ(writtenSectors("", folder.path()), std::nullopt);
    std::ofstream(folder.path() / "sdb" / "stat") << "  10  0  80\n";
    EXPECT_EQ(writtenSectors("sdb", folder.path()), std::nullopt);
}

}  // namespace
}  // namespace kestrav
