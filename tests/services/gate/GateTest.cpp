#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "command/Answer.h"
#include "services/disk/SysfsBlockDevices.h"
#include "services/gate/Gate.h"
#include "services/gate/RequestLog.h"
#include "services/gate/answerFor.h"
#include "tests/TemporaryFolder.h"
#include "tests/base/RecordingLog.h"
#include "tests/sanitizers.h"
#include "tests/services/SimulatedAccessory.h"
#include "tests/services/asker/FakeAsker.h"
#include "tests/services/asker/FakeConsent.h"

namespace kestrav {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

constexpr std::size_t diskBytes = std::size_t{4} << 20U;

class GateOnSimulatedDisk : public testing::Test {
  protected:
    std::string perform(std::string_view command, const std::vector<std::string>& arguments) {
        return performAs(::geteuid(), command, arguments);
    }
    std::string performAs(uid_t uid, std::string_view command, const std::vector<std::string>& arguments) {
        FakeAsker asker(uid);
        return Gate(consent_, devices_, mounts_, requests_, board_).perform(asker, command, arguments).text;
    }
    std::string board() const { return contentsOf(board_ / "sdzz.json"); }
    std::string write(const std::string& image, std::uint64_t block) {
        return perform("dd", {"if=" + image, "of=/dev/rsdzz", "seek=" + std::to_string(block), "bs=512"});
    }
    std::string read(std::uint64_t block, std::uint64_t count) {
        return perform("dd", {"if=/dev/rsdzz", "skip=" + std::to_string(block), "count=" + std::to_string(count)});
    }
    std::string diskWith(const std::string& image, std::uint64_t block) const {
        std::string disk = before_;
        return disk.replace(block * 512, image.size(), image);
    }

    /// Writes in a process of its own, which may open that many files at once.
    std::string writeWithSpareDescriptors(const std::string& image, int spare) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) return "no pipe";
        const UniqueFd told(ends[0]);
        UniqueFd telling(ends[1]);
        const pid_t child = ::fork();
        if (child == 0) {
            ::close_range(static_cast<unsigned>(telling.get()) + 1, ~0U, 0);
            const auto most = static_cast<rlim_t>(telling.get() + 1 + spare);
            const rlimit few{most, most};
            ::setrlimit(RLIMIT_NOFILE, &few);
            const std::string answer = write(image, 1536);
            ::_exit(::write(telling.get(), answer.data(), answer.size()) > 0 ? 0 : 1);
        }
        telling.reset();
        std::string answer(10240, '\0');
        const ssize_t got = ::read(told.get(), answer.data(), answer.size());
        ::waitpid(child, nullptr, 0);
        answer.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        return answer;
    }

    const std::string before_ = patternOf(diskBytes, 7);
    SimulatedAccessory accessory_{before_};
    TemporaryFolder folder_;
    const std::filesystem::path board_ = folder_.path() / "board";
    FakeConsent consent_;
    SysfsBlockDevices devices_;
    MountinfoTable mounts_;
    RecordingLog log_;
    RequestLog requests_{log_};
};

TEST_F(GateOnSimulatedDisk, WritesAFirmware) {
    const std::string image = patternOf(40000, 3);
    const std::string answer = write(folder_.file("a b=c.fds", image), 1536);
    EXPECT_THAT(answer, MatchesRegex("Wrote 40000 bytes to sdzz at block 1536, verified, [0-9]+\\.[0-9] MB/s\\."));
    EXPECT_TRUE(accessory_.diskBytes() == diskWith(image, 1536));
    const std::string who = "user " + std::to_string(::geteuid());
    EXPECT_THAT(log_.entries(), ElementsAre(StartsWith(who + ": dd if=" + (folder_.path() / "a b=c.fds").string() +
                                                       " of=/dev/rsdzz seek=1536 bs=512: Wrote 40000 bytes")));
}

TEST_F(GateOnSimulatedDisk, WritesAnIcon) {
    const std::string image = patternOf(1, 3);
    EXPECT_THAT(write(folder_.file("icon", image), 2048), StartsWith("Wrote 1 bytes to sdzz at block 2048, verified"));
    EXPECT_TRUE(accessory_.diskBytes() == diskWith(image, 2048));
}

TEST_F(GateOnSimulatedDisk, SaysWhenAFirmwareReachesIntoTheIcon) {
    const std::string most = patternOf(262144, 3);
    EXPECT_THAT(write(folder_.file("most", most), 1536), Not(HasSubstr("icon area")));
    const std::string more = patternOf(262145, 3);
    EXPECT_THAT(write(folder_.file("more", more), 1536),
                HasSubstr("It reaches into the icon area: blocks 1536 to 2048 were written."));
    EXPECT_TRUE(accessory_.diskBytes() == diskWith(more, 1536));
}

TEST_F(GateOnSimulatedDisk, SaysThatBlockZeroHeldThePartitionTable) {
    EXPECT_THAT(write(folder_.file("image", "x"), 0), HasSubstr("This replaced the disk's partition table."));
    EXPECT_THAT(write(folder_.file("image", "x"), 1),
                AllOf(StartsWith("Wrote 1 bytes"), Not(HasSubstr("partition table"))));
}

TEST_F(GateOnSimulatedDisk, WritesUpToTheLastByte) {
    const std::string image = patternOf(diskBytes - 1536 * 512, 3);
    EXPECT_THAT(write(folder_.file("image", image), 1536), HasSubstr("verified"));
    EXPECT_TRUE(accessory_.diskBytes() == diskWith(image, 1536));
}

TEST_F(GateOnSimulatedDisk, RefusesAnImageLongerThanTheRoomBeforeAByteIsWritten) {
    const std::string image = folder_.file("image", patternOf(diskBytes - 1536 * 512 + 1, 3));
    EXPECT_EQ(write(image, 1536),
              "Refused: the image has 3407873 bytes, but sdzz has room for 3407872 from block 1536 on. Nothing was "
              "written.");
    EXPECT_TRUE(accessory_.diskBytes() == before_);
}

TEST_F(GateOnSimulatedDisk, RefusesABlockPastTheEnd) {
    const std::string image = folder_.file("image", "x");
    EXPECT_EQ(write(image, 8192), "Refused: block 8192 lies past the end of sdzz, which has 8192 blocks.");
    EXPECT_THAT(write(image, 9223372036854775807U), StartsWith("Refused: block 9223372036854775807 lies past"));
    EXPECT_TRUE(accessory_.diskBytes() == before_);
}

TEST_F(GateOnSimulatedDisk, SaysThatAnEjectedMediumHoldsNothing) {
    accessory_.setAttribute(SimulatedAccessory::diskPath, "size", "0");
    const std::string expected =
        "Refused: the accessory shows no memory behind sdzz, as after it was ejected; unplug it, plug it in again and "
        "try again.";
    EXPECT_EQ(write(folder_.file("image", "x"), 1536), expected);
    EXPECT_EQ(read(1536, 1), expected);
}

TEST_F(GateOnSimulatedDisk, LeavesTheOutcomeOnTheBoard) {
    write(folder_.file("image", patternOf(40000, 3)), 1536);
    EXPECT_THAT(board(), HasSubstr(R"("disk":"sdzz","user":)" + std::to_string(::geteuid()) + R"(,"asker":)"));
    EXPECT_THAT(board(), HasSubstr(R"("firstBlock":1536,"bytes":40000,"phase":"done","done":)"));
    EXPECT_THAT(board(), HasSubstr(R"("verdict":"wrote")"));
    write("/missing", 2048);
    EXPECT_THAT(board(), HasSubstr(R"("firstBlock":2048,"bytes":0,"phase":"done",)"));
    EXPECT_THAT(board(), HasSubstr(R"("verdict":"refused")"));
}

TEST_F(GateOnSimulatedDisk, SaysOnTheBoardThatNobodyAgreed) {
    consent_.problem = refused("an administrator did not agree.");
    ASSERT_EQ(::chmod(folder_.path().c_str(), 0755), 0);
    performAs(kOtherUser, "dd", {"if=" + folder_.file("image", "x"), "of=/dev/rsdzz", "seek=1536", "bs=512"});
    EXPECT_THAT(board(), HasSubstr(R"("user":1,)"));
    EXPECT_THAT(board(), HasSubstr(R"("phase":"done")"));
    EXPECT_THAT(board(), HasSubstr(R"("verdict":"refused")"));
}

TEST_F(GateOnSimulatedDisk, PutsNothingOnTheBoardButWritesToTheAccessory) {
    perform("umount", {"/dev/sdzzs1"});
    read(1536, 1);
    perform("dd", {"if=/image", "of=/dev/rsdzy", "seek=1536", "bs=512"});
    accessory_.setAttribute(SimulatedAccessory::usbPath, "idVendor", "1d6b");
    write(folder_.file("image", "x"), 1536);
    EXPECT_FALSE(std::filesystem::exists(board_));
}

TEST_F(GateOnSimulatedDisk, WritesAsWellWithoutABoard) {
    std::ofstream(board_) << "in the way";
    EXPECT_THAT(write(folder_.file("image", "x"), 1536), StartsWith("Wrote 1 bytes"));
}

TEST_F(GateOnSimulatedDisk, RefusesWhatIsNoImage) {
    const std::string fifo = folder_.path() / "fifo";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_THAT(write(fifo, 1536), MatchesRegex("Refused: the image .*fifo is not a regular file\\."));
    EXPECT_THAT(write(folder_.path(), 1536), HasSubstr("is not a regular file"));
    EXPECT_THAT(write(folder_.file("empty", ""), 1536), HasSubstr("is empty"));
    EXPECT_THAT(write("/missing", 1536), HasSubstr("No such file or directory"));
    EXPECT_TRUE(accessory_.diskBytes() == before_);
}

TEST_F(GateOnSimulatedDisk, RefusesAnotherUsersFile) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: takes on another user";
    const std::string image = folder_.file("image", "of root");
    ASSERT_EQ(::chmod(image.c_str(), 0600), 0);
    const std::vector<std::string> arguments{"if=" + image, "of=/dev/rsdzz", "seek=1536", "bs=512"};
    const std::string answer = performAs(65534, "dd", arguments);
    EXPECT_THAT(answer, HasSubstr("can't be opened by user 65534: Permission denied"));
    EXPECT_TRUE(accessory_.diskBytes() == before_);
}

/// Somebody's image, for which a person has to agree.
class ImageToAgreeTo : public GateOnSimulatedDisk {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "needs root: asks on behalf of another user";
        std::filesystem::permissions(folder_.path(), std::filesystem::perms(0755));
    }
    std::string writeAgreed() {
        return performAs(kOtherUser, "dd", {"if=" + image_, "of=/dev/rsdzz", "seek=1536", "bs=512"});
    }

    const std::string image_ = folder_.file("new.fds", patternOf(40000, 3));
};

TEST_F(ImageToAgreeTo, IsWrittenThoughAnotherOneHasTakenItsName) {
    consent_.meanwhile = [this] { std::filesystem::rename(folder_.file("other.fds", patternOf(90000, 5)), image_); };
    EXPECT_THAT(writeAgreed(), StartsWith("Wrote 40000 bytes to sdzz at block 1536"));
    ASSERT_EQ(consent_.intents.size(), 1U);
    EXPECT_EQ(consent_.intents.front().bytes, "40000");
    EXPECT_TRUE(accessory_.diskBytes() == diskWith(patternOf(40000, 3), 1536));
}

TEST_F(ImageToAgreeTo, IsDoneWithOnTheBoardOnceTheAskerHasItsAnswer) {
    FakeAsker asker(kOtherUser);
    asker.begins = false;
    consent_.meanwhile = [&] {
        EXPECT_THAT(board(), HasSubstr("\"phase\":\"asking\""));
        asker.answered();
        EXPECT_THAT(board(), HasSubstr("\"verdict\":\"refused\""));
        // The next request's by now.
        std::filesystem::remove(board_ / "sdzz.json");
    };
    Gate gate(consent_, devices_, mounts_, requests_, board_);
    gate.perform(asker, "dd", std::vector<std::string>{"if=" + image_, "of=/dev/rsdzz", "seek=1536", "bs=512"});
    EXPECT_EQ(consent_.askedAbout.size(), 1U);
    EXPECT_EQ(board(), "") << "said more than once";
}

TEST_F(ImageToAgreeTo, IsNotWrittenWhenItHasGrown) {
    consent_.meanwhile = [this] { std::ofstream(image_, std::ios::app) << patternOf(5000, 9); };
    EXPECT_EQ(writeAgreed(), "Failed: the image changed while it was read. Nothing was written.");
    EXPECT_TRUE(accessory_.diskBytes() == before_);
}

TEST_F(GateOnSimulatedDisk, DoesNotLetAStrangerFillItsLog) {
    for (int i = 0; i < 100; ++i)
        performAs(kOtherUser, "rm", {});
    EXPECT_EQ(log_.entries().size(), RequestLog::kListed);
    performAs(kOtherUser, "umount", {"/dev/sdzzs1"});
    EXPECT_THAT(log_.entries().back(), HasSubstr("was not mounted")) << "what is carried out always has its line";
}

TEST_F(GateOnSimulatedDisk, RefusesAnotherDisk) {
    accessory_.setAttribute(SimulatedAccessory::usbPath, "idVendor", "1d6b");
    const std::string image = folder_.file("image", "x");
    EXPECT_EQ(write(image, 1536),
              "Refused: /dev/sdzz is not on the accessory (USB 10d6:fd01); nothing else is touched.");
    EXPECT_THAT(read(0, 1), HasSubstr("is not on the accessory"));
    EXPECT_THAT(perform("umount", {"/dev/sdzzs1"}), HasSubstr("is not on the accessory"));
    EXPECT_TRUE(accessory_.diskBytes() == before_);
}

TEST_F(GateOnSimulatedDisk, ReadsBlocksBack) {
    EXPECT_TRUE(read(1536, 19) == before_.substr(1536 * 512, 19 * 512));
    EXPECT_TRUE(read(8191, 1) == before_.substr(8191 * 512));
    EXPECT_THAT(log_.entries().at(0), testing::EndsWith("count=19: read 9728 bytes"));
}

TEST_F(GateOnSimulatedDisk, RefusesMoreBlocksThanAReplyHolds) {
    EXPECT_THAT(read(1536, 20), StartsWith("Refused: a reply has room for 19 blocks"));
    EXPECT_THAT(read(8191, 2), StartsWith("Refused: sdzz has 8192 blocks"));
}

TEST_F(GateOnSimulatedDisk, AnswersKindlyWhenNothingWasMounted) {
    EXPECT_EQ(perform("umount", {"/dev/sdzzs1"}), "sdzz1 was not mounted.");
}

TEST_F(GateOnSimulatedDisk, RefusesEverythingElseInOneHarmlessLine) {
    const std::string answer = perform("rm\n\x1b[2J\xff%n", {std::string(60'000, '%')});
    EXPECT_EQ(answer, "Refused: \"rm\\x0a\\x1b[2J\xef\xbf\xbd%n\" is not a command of this service.");
    EXPECT_EQ(log_.entries().size(), 1U);
    EXPECT_LT(log_.entries()[0].size(), 3000U);
}

TEST_F(GateOnSimulatedDisk, SaysWhichTimeThatItLacksDescriptors) {
    if (!kDescriptorsAreOurs) GTEST_SKIP() << "the checks for undefined behaviour need descriptors themselves";
    const std::string image = folder_.file("image", "x");
    std::string answer;
    int refusals = 0;
    int endsOfTheTestBed = 0;
    for (int spare = 0; spare < 40; ++spare) {
        answer = writeWithSpareDescriptors(image, spare);
        if (answer.starts_with("Wrote")) break;
        // Its library ends the process that has opened a disk with its last descriptor: it needs one itself then.
        if (answer.empty() && endsOfTheTestBed++ == 0) continue;
        ++refusals;
        EXPECT_THAT(answer, StartsWith("Refused: ")) << spare;
        EXPECT_THAT(answer, HasSubstr("Too many open files")) << spare;
        EXPECT_TRUE(accessory_.diskBytes() == before_) << spare;
    }
    EXPECT_THAT(answer, StartsWith("Wrote 1 bytes"));
    EXPECT_GT(refusals, 0);
}

TEST_F(GateOnSimulatedDisk, RefusesADiskThatAnotherServiceHasLocked) {
    const UniqueFd other(::open((accessory_.nodes() / "sdzz").c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_EQ(::flock(other.get(), LOCK_EX), 0);
    EXPECT_THAT(write(folder_.file("image", "x"), 1536), StartsWith("Refused: the disk sdzz is in use by"));
    EXPECT_THAT(read(0, 1), StartsWith("Refused: the disk sdzz is in use by"));
    ASSERT_EQ(::flock(other.get(), LOCK_UN), 0);
    EXPECT_THAT(write(folder_.file("image", "x"), 1536), StartsWith("Wrote 1 bytes"));
    EXPECT_THAT(write(folder_.file("image", "x"), 1536), StartsWith("Wrote 1 bytes"));  // and left no lock behind
}

/// What a front end takes the gate's answers for.
class GateAnswers : public GateOnSimulatedDisk {
  protected:
    Answer answerTo(const std::string& command, const std::vector<std::string>& arguments) {
        return parseAnswer(perform(command, arguments), AnswerTo::of(command, arguments));
    }
    Answer answerToWrite(const std::string& image, std::uint64_t block) {
        return answerTo("dd", {"if=" + image, "of=/dev/rsdzz", "seek=" + std::to_string(block), "bs=512"});
    }
    Answer answerToRead(std::uint64_t block, std::uint64_t count) {
        return answerTo("dd", {"if=/dev/rsdzz", "skip=" + std::to_string(block), "count=" + std::to_string(count)});
    }
};

TEST_F(GateAnswers, AreAWriteWithItsParts) {
    const Answer answer = answerToWrite(folder_.file("image", patternOf(40000, 3)), 1536);
    EXPECT_EQ(answer.meaning, Answer::Meaning::wroteAndVerified);
    EXPECT_EQ(answer.bytes, 40000U);
    EXPECT_EQ(answer.disk, "sdzz");
    EXPECT_EQ(answer.firstBlock, 1536U);
}

TEST_F(GateAnswers, AreAWriteWithAllItsRemarks) {
    const Answer answer = answerToWrite(folder_.file("image", patternOf(2049 * 512, 3)), 0);
    EXPECT_EQ(answer.meaning, Answer::Meaning::wroteAndVerified);
    EXPECT_EQ(answer.firstBlock, 0U);
}

TEST_F(GateAnswers, AreNothingToUnmount) {
    const Answer answer = answerTo("umount", {"/dev/sdzzs1"});
    EXPECT_EQ(answer.meaning, Answer::Meaning::wasNotMounted);
    EXPECT_EQ(answer.disk, "sdzz1");
}

TEST_F(GateAnswers, AreBlocks) {
    EXPECT_EQ(answerToRead(1536, 19).meaning, Answer::Meaning::blocks);
    EXPECT_EQ(answerToRead(0, 1).meaning, Answer::Meaning::blocks);
}

TEST_F(GateAnswers, AreRefusals) {
    const std::string image = folder_.file("image", "x");
    EXPECT_EQ(answerToWrite(image, 999999).meaning, Answer::Meaning::refused);
    EXPECT_EQ(answerToWrite("/none", 1536).meaning, Answer::Meaning::refused);
    EXPECT_EQ(answerToRead(0, 20).meaning, Answer::Meaning::refused);
    EXPECT_EQ(answerTo("umount", {"/dev/sdas1"}).meaning, Answer::Meaning::refused);
    EXPECT_EQ(answerTo("umount", {"bad\x1b\n\xff"}).meaning, Answer::Meaning::refused);
    EXPECT_EQ(answerTo("sh", {"-c", "reboot"}).meaning, Answer::Meaning::refused);
    EXPECT_EQ(answerTo("dd", {std::string(9000, '\xff')}).meaning, Answer::Meaning::refused);
}

TEST(GateAnswer, ToAProblemIsOneWhateverItHolds) {
    const std::string sentence = "an image \n\xff" + std::string(20000, 'a');
    for (const AnswerTo::Kind kind : {AnswerTo::Kind::unmount, AnswerTo::Kind::write, AnswerTo::Kind::read}) {
        const AnswerTo question{kind, 512};
        EXPECT_EQ(parseAnswer(answerFor(failed(sentence)), question).meaning, Answer::Meaning::failed);
        EXPECT_EQ(parseAnswer(answerFor(refused(sentence)), question).meaning, Answer::Meaning::refused);
    }
}

}  // namespace
}  // namespace kestrav
