#include <atomic>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <memory>
#include <sstream>

#include "cli/ServiceAnswers.h"
#include "cli/TransferMeter.h"
#include "cli/carryOut.h"
#include "tests/command/LoopbackService.h"
#include "tests/device/fakes/EngineOnFakes.h"
#include "tests/device/fakes/bytes.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFirmwareOffset = 1536 * 512;
constexpr std::size_t kIconOffset = 2048 * 512;
constexpr std::uintmax_t kPiece = 64 << 20;

/// What the service says to an update: first of the unmounting, then of the write.
LoopbackBehaviour answersInTurn(std::string ofUnmounting, std::string ofWrite) {
    const auto turn = std::make_shared<std::atomic<int>>(0);
    return [=](LoopbackConnection& connection) { answers((*turn)++ == 0 ? ofUnmounting : ofWrite)(connection); };
}

/// kestravctl without its process: an engine on fakes, a folder of its own, and both streams in memory.
class Commands : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = fs::temp_directory_path() / "kestrav-commands.XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string made(const std::string& name, std::string_view content) const {
        std::ofstream(folder_ / name, std::ios::binary) << content;
        return folder_ / name;
    }
    std::string sparse(const std::string& name, std::uintmax_t size) const {
        const std::string path = made(name, "");
        fs::resize_file(path, size);
        return path;
    }

    /// The accessory's disk as the raw and as the block node show it, with `content` at `offset`.
    void plugIn(std::size_t size, std::size_t offset = 0, std::string_view content = {}) {
        on.plugIn("disk2");
        std::vector<std::byte> disk(size);
        std::ranges::copy(bytes(content), disk.begin() + static_cast<std::ptrdiff_t>(offset));
        on.disks.disks["/dev/rdisk2"] = disk;
        on.disks.disks["/dev/disk2"] = std::move(disk);
    }

    ExitCode carriedOut(const Invocation& invocation) {
        return carryOut(invocation, {engine, meter, serviceAnswers, {out, err}});
    }

    bool complained(std::string_view words) const { return err.str().find(words) != std::string::npos; }

    LoopbackService service;
    EngineOnFakes on;
    ServiceAnswers serviceAnswers;
    CommandService commands{
        on.systemLog, {.port = service.port(), .connectSeconds = 5, .readSeconds = 5}, &serviceAnswers};
    TransferMeter meter{on.disks};
    KestravDevice engine{on.registry, on.volumes, meter, commands, on.console};
    std::ostringstream out;
    std::ostringstream err;

  private:
    fs::path folder_;
};

using Detect = Commands;
using Verify = Commands;
using Read = Commands;
using Write = Commands;
using Push = Commands;
using Pull = Commands;
using FullStandardOutput = Commands;
using AnswerOfAStranger = Commands;

TEST_F(Detect, EndsWithFiveWithoutARegistry) {
    on.registry.breakDown();
    EXPECT_EQ(carriedOut(DetectInvocation{}), ExitCode::registryUnreachable);
    EXPECT_TRUE(complained("The device registry can't be reached."));
}

TEST_F(Detect, EndsWithThreeWithoutAnAccessory) {
    EXPECT_EQ(carriedOut(DetectInvocation{}), ExitCode::noAccessory);
    EXPECT_EQ(out.str(), "");
}

TEST_F(Detect, ShowsControlCharactersOfANameEscaped) {
    on.registry.plugIn({.id = 7, .name = "\x1b[2JAccessory\n", .disk = "disk2"});
    EXPECT_EQ(carriedOut(DetectInvocation{}), ExitCode::success);
    EXPECT_EQ(out.str(), "name: \\x1b[2JAccessory\\x0a\ndisk: disk2\nid: 7\n");
}

TEST_F(Detect, WritesANameIntoJsonAsData) {
    on.registry.plugIn({.id = 7, .name = "\"\\", .disk = "disk2"});
    EXPECT_EQ(carriedOut(DetectInvocation{.json = true}), ExitCode::success);
    EXPECT_EQ(out.str(), R"({"found":true,"name":"\"\\","disk":"disk2","id":7})"
                         "\n");
}

TEST_F(Verify, SucceedsWhenTheAreaHoldsTheImage) {
    plugIn(2 << 20, kFirmwareOffset, "firmware");
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmware"), true}), ExitCode::success);
    EXPECT_EQ(out.str(), "Verified: the 8 bytes on the disk are those of the image.\n");
}

TEST_F(Verify, LooksAtTheAreaOfTheImagesKind) {
    plugIn(2 << 20, kIconOffset, "an icon");
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::icon, made("i", "an icon"), true}), ExitCode::success);
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "an icon"), true}),
              ExitCode::verificationFailed);
}

TEST_F(Verify, NamesTheFirstByteThatDiffers) {
    plugIn(2 << 20, kFirmwareOffset, "firmware");
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmWare"), true}),
              ExitCode::verificationFailed);
    EXPECT_TRUE(complained("differs from the image at byte 4 of it"));
}

TEST_F(Verify, FailsWhenTheDiskCannotBeReadBack) {
    on.plugIn("disk2");
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmware"), true}),
              ExitCode::verificationFailed);
    EXPECT_TRUE(complained("can't be read back"));
}

TEST_F(Verify, BelievesAServiceThatSaysThatTheWriteFailed) {
    plugIn(2 << 20, kFirmwareOffset, "firmware");
    const UpdateInvocation update{ImageKind::firmware, made("f", "firmware"), true};
    service.setBehaviour(answersInTurn("disk2s1 was not mounted.", "Failed: the disk did not keep it."));
    EXPECT_EQ(carriedOut(update), ExitCode::verificationFailed);
    EXPECT_TRUE(complained("the service says that the write failed"));
    // Only of the write: a failed unmounting is followed by the write's own answer.
    service.setBehaviour(answersInTurn("Failed: disk2s1 is busy.", "Wrote 8 bytes."));
    EXPECT_EQ(carriedOut(update), ExitCode::success);
}

TEST_F(AnswerOfAStranger, IsSaidToBeOne) {
    on.plugIn("disk2");
    EXPECT_EQ(carriedOut(DetectInvocation{}), ExitCode::success);
    EXPECT_EQ(err.str(), "");
    serviceAnswers.unanswered({Unanswered::Why::notAccepted, "The log says this."});
    serviceAnswers.unanswered({Unanswered::Why::notTheService, "This is not the service's answer."});
    EXPECT_EQ(carriedOut(DetectInvocation{}), ExitCode::success);
    EXPECT_TRUE(complained("This is not the service's answer.\n"));
    EXPECT_FALSE(complained("The log says this.")) << "said twice";
}

TEST_F(Verify, ComparesPastTheFirstPiece) {
    plugIn(kFirmwareOffset + kPiece + 2, kFirmwareOffset + kPiece, "x");
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, sparse("f", kPiece + 1), true}),
              ExitCode::verificationFailed);
    EXPECT_TRUE(complained("at byte 67108864 of it"));
}

TEST_F(Verify, TakesNoZerosOfTheEngineForBytesOfTheDisk) {
    plugIn(kFirmwareOffset + 4096);
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, sparse("f", 8192), true}), ExitCode::verificationFailed);
    on.disks.longestTransfer = 100;
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, sparse("f", 4096), true}), ExitCode::verificationFailed);
    EXPECT_EQ(out.str(), "");
}

TEST_F(Verify, IsNotTriedAfterAnUpdateThatFailed) {
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmware"), true}), ExitCode::failure);
    EXPECT_TRUE(on.disks.journal.empty());
}

TEST_F(Read, FailsWhenThereIsNothingToRead) {
    plugIn(512);
    EXPECT_EQ(carriedOut(ReadInvocation{.offset = 512, .length = 1, .output = made("out", "kept")}), ExitCode::failure);
}

TEST_F(Read, EndsWhereTheDiskEndsAndSaysSo) {
    plugIn(512, 510, "ab");
    const std::string output = made("out", "");
    EXPECT_EQ(carriedOut(ReadInvocation{.offset = 510, .length = 5, .output = output}), ExitCode::success);
    EXPECT_EQ(fs::file_size(output), 2U);
    EXPECT_TRUE(complained("Only 2 of 5 bytes could be read."));
}

TEST_F(Read, SaysThatItsFileCannotBeWritten) {
    plugIn(512);
    EXPECT_EQ(carriedOut(ReadInvocation{.offset = 0, .length = 1, .output = "/dev/full"}), ExitCode::wrongCall);
    EXPECT_TRUE(complained("No space left"));
}

TEST_F(Write, PutsTheFilesBytesOnTheBlockNode) {
    plugIn(512);
    EXPECT_EQ(carriedOut(WriteInvocation{3, made("f", "abc")}), ExitCode::success);
    const auto& disk = on.disks.disks["/dev/disk2"];
    EXPECT_EQ(std::vector(disk.begin() + 2, disk.begin() + 7), bytes(std::string_view("\0abc\0", 5)));
}

TEST_F(Write, FailsWhenTheDiskTakesOnlyAPart) {
    plugIn(512);
    EXPECT_EQ(carriedOut(WriteInvocation{510, made("f", "abc")}), ExitCode::failure);
    EXPECT_TRUE(complained("Only 2 of 3 bytes could be written."));
}

TEST_F(Write, RefusesMoreThanOneWriteCanCarry) {
    plugIn(512);
    EXPECT_EQ(carriedOut(WriteInvocation{0, sparse("f", 2147479553)}), ExitCode::wrongCall);
    EXPECT_TRUE(complained("larger than the 2147479552 bytes"));
    EXPECT_TRUE(on.disks.journal.empty());
}

TEST_F(Push, HandsOverTheAbsolutePathAndTheBlock) {
    plugIn(512);
    const std::string path = made("f", "x");
    EXPECT_EQ(carriedOut(PushInvocation{77, path}), ExitCode::success);
    ASSERT_EQ(service.requests().size(), 2U);
    EXPECT_NE(service.requests()[1].find("if=" + path), std::string::npos);
    EXPECT_NE(service.requests()[1].find("seek=77"), std::string::npos);
}

TEST_F(Push, FailsWithoutAnAccessory) {
    EXPECT_EQ(carriedOut(PushInvocation{0, made("f", "x")}), ExitCode::failure);
}

class UnusableFile : public Commands, public testing::WithParamInterface<const char*> {};

TEST_P(UnusableFile, IsRefusedByEveryCommandBeforeTheEngineSeesIt) {
    plugIn(512);
    const std::string file = GetParam();
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, file, false}), ExitCode::wrongCall);
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::icon, file, false}), ExitCode::wrongCall);
    EXPECT_EQ(carriedOut(PushInvocation{0, file}), ExitCode::wrongCall);
    EXPECT_EQ(carriedOut(WriteInvocation{0, file}), ExitCode::wrongCall);
    EXPECT_TRUE(service.requests().empty());
    EXPECT_TRUE(on.disks.journal.empty());
    EXPECT_TRUE(complained(file));
}

INSTANTIATE_TEST_SUITE_P(Files, UnusableFile, testing::Values("/none", "/", "/dev/null", "/dev/stdin/none"));

TEST_F(Commands, RefuseAnImageThatCannotBeRead) {
    // An ordinary file by its kind that can only be written to.
    const char* const writeOnly = "/sys/bus/platform/drivers_probe";
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, writeOnly, false}), ExitCode::wrongCall);
    EXPECT_TRUE(complained("can't be read"));
}

TEST_F(Commands, ListDrivesWhoseNamesAreNotUtf8) {
    on.volumes.mounted = {"/media/bad\xff", "/media/good"};
    EXPECT_EQ(carriedOut(DrivesInvocation{.json = true}), ExitCode::success);
    EXPECT_EQ(out.str(), "[\"/media/bad\uFFFD\",\"/media/good\"]\n");
}

TEST_F(Pull, AsksForTheBlocks) {
    plugIn(512);
    EXPECT_EQ(carriedOut(PullInvocation{1536, 2}), ExitCode::success);
    ASSERT_EQ(service.requests().size(), 1U);
    EXPECT_NE(service.requests()[0].find(R"("skip=1536","count=2")"), std::string::npos);
}

TEST_F(Pull, FailsWithoutAnAccessory) {
    EXPECT_EQ(carriedOut(PullInvocation{0, 1}), ExitCode::failure);
    EXPECT_TRUE(service.requests().empty());
}

TEST_F(FullStandardOutput, IsAnError) {
    plugIn(512);
    out.setstate(std::ios::badbit);
    EXPECT_EQ(carriedOut(DetectInvocation{}), ExitCode::wrongCall);
    EXPECT_TRUE(complained("Standard output can't be written"));
}

}  // namespace
}  // namespace kestrav
