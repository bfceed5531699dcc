#include <filesystem>
#include <gtest/gtest.h>

#include "tests/cli/Commands.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kFirmwareOffset = 1536 * 512;
constexpr std::size_t kIconOffset = 2048 * 512;
constexpr std::uintmax_t kPiece = 1 << 20;  // of the second look

using Detect = Commands;
using Update = Commands;
using Verify = Commands;
using Read = Commands;
using Write = Commands;
using Push = Commands;
using FullStandardOutput = Commands;

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

TEST_F(Update, SucceedsWhenTheServiceConfirmsIt) {
    plugIn(2 << 20);
    service.setBehaviour(confirms(8));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmware")}), ExitCode::success);
    EXPECT_EQ(out.str(), "The image is on disk2: 8 bytes from block 1536 on, read back and equal.\n");
    EXPECT_TRUE(on.disks.journal.empty()) << "without being asked to, it looks at the disk itself";
}

TEST_F(Update, AsksForTheIconAgainWhenItsAreaWasReached) {
    plugIn(2 << 20);
    service.setBehaviour(confirms(262145));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, sparse("f", 262145)}), ExitCode::success);
    EXPECT_TRUE(out.str().ends_with("It reaches into the icon area: send the icon again, too.\n")) << out.str();
}

TEST_F(Update, FailsWhenTheServiceRefusesIt) {
    plugIn(2 << 20);
    service.setBehaviour(answersInTurn("disk21 was not mounted.", "Refused: the disk disk2 is write-protected."));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmware"), {.verify = true}}),
              ExitCode::wentWrong);
    EXPECT_EQ(err.str(), "kestravctl: Nothing was written: the disk disk2 is write-protected.\n");
    EXPECT_TRUE(on.disks.journal.empty()) << "a second look changes nothing about a refusal";
}

TEST_F(Update, IsJudgedByTheWriteAndNotByTheUnmounting) {
    plugIn(2 << 20);
    service.setBehaviour(
        answersInTurn("Refused: there is no /dev/disk2s1.", "Wrote 1 bytes to disk2 at block 77, verified, 9.9 MB/s."));
    EXPECT_EQ(carriedOut(PushInvocation{77, made("f", "x")}), ExitCode::success);
}

TEST_F(Update, WithoutAServiceHandsNothingOver) {
    plugIn(2 << 20);
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::icon, made("i", "x"), {.verify = true}}, 1), ExitCode::failure);
    EXPECT_EQ(err.str(), "kestravctl: The service is not running: systemctl start kestrav-commandd.socket\n");
}

TEST_F(Update, TellsAMissingRegistryFromAMissingAccessory) {
    const UpdateInvocation update{ImageKind::firmware, made("f", "firmware")};
    EXPECT_EQ(carriedOut(update), ExitCode::failure);
    EXPECT_TRUE(complained("No accessory (USB 10d6:fd01) is attached. Plug it in and try again.\n"));
    on.registry.breakDown();
    EXPECT_EQ(carriedOut(update), ExitCode::registryUnreachable);
    EXPECT_TRUE(complained("The device registry can't be reached. Is /sys mounted?\n"));
}

TEST_F(Update, SaysThatTheAccessoryHasNoDisk) {
    on.plugIn(std::nullopt);
    service.setBehaviour(answers("Refused: there is no /dev/rnil."));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmware")}), ExitCode::wentWrong);
    EXPECT_TRUE(complained("The accessory has no disk yet"));
}

TEST_F(Update, OfAnEmptyImageHandsNothingOver) {
    plugIn(2 << 20);
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "")}), ExitCode::failure);
    EXPECT_TRUE(complained("The image is empty"));
    EXPECT_TRUE(service.requests().empty());
}

TEST_F(Verify, SucceedsWhenTheAreaHoldsTheImage) {
    plugIn(2 << 20, kFirmwareOffset, "firmware");
    service.setBehaviour(confirms(8));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmware"), {.verify = true}}),
              ExitCode::success);
    EXPECT_EQ(out.str(), "Verified: the 8 bytes on the disk are those of the image.\n");
}

TEST_F(Verify, OnlyLooks) {
    plugIn(2 << 20, kFirmwareOffset, "firmware");
    on.volumes.mounted = {"/media/somebody's"};
    service.setBehaviour(confirms(8));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmware"), {.verify = true}}),
              ExitCode::success);
    EXPECT_EQ(on.disks.journal, (std::vector<std::string>{"open r /dev/rdisk2", "close"}));
}

TEST_F(Verify, LooksAtTheAreaOfTheImagesKind) {
    plugIn(2 << 20, kIconOffset, "an icon");
    service.setBehaviour(confirms(7, 2048));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::icon, made("i", "an icon"), {.verify = true}}), ExitCode::success);
    service.setBehaviour(confirms(7));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "an icon"), {.verify = true}}),
              ExitCode::wentWrong);
}

TEST_F(Verify, NamesTheFirstByteThatDiffers) {
    plugIn(2 << 20, kFirmwareOffset, "firmware");
    service.setBehaviour(confirms(8));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmWare"), {.verify = true}}),
              ExitCode::wentWrong);
    EXPECT_TRUE(complained("differs from the image at byte 4 of it"));
}

TEST_F(Verify, LeavesItToTheServiceWhereTheDiskMayNotBeOpened) {
    plugIn(2 << 20);
    on.disks.openingIsDenied = true;
    service.setBehaviour(confirms(8));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmware"), {.verify = true}}),
              ExitCode::success);
    EXPECT_TRUE(out.str().ends_with("That is the service's own look: you may not open /dev/rdisk2 for a second one.\n"))
        << out.str();
    EXPECT_EQ(err.str(), "");
}

TEST_F(Verify, FailsWhenTheDiskCannotBeReadBack) {
    on.plugIn("disk2");
    service.setBehaviour(confirms(8));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmware"), {.verify = true}}),
              ExitCode::wentWrong);
    EXPECT_TRUE(complained("can't be read back: No such file or directory"));
}

TEST_F(Verify, ComparesPastTheFirstPiece) {
    plugIn(kFirmwareOffset + kPiece + 2, kFirmwareOffset + kPiece, "x");
    service.setBehaviour(confirms(kPiece + 1));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, sparse("f", kPiece + 1), {.verify = true}}),
              ExitCode::wentWrong);
    EXPECT_TRUE(complained("at byte 1048576 of it"));
}

TEST_F(Verify, ReadsOnAfterAShortReadAndEndsAtTheEnd) {
    plugIn(kFirmwareOffset + 4096);
    on.disks.longestTransfer = 100;
    service.setBehaviour(confirms(4096));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, sparse("f", 4096), {.verify = true}}),
              ExitCode::success);
    service.setBehaviour(confirms(8192));
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, sparse("f", 8192), {.verify = true}}),
              ExitCode::wentWrong);
    EXPECT_TRUE(complained("it ends there"));
}

TEST_F(Verify, IsNotTriedAfterAnUpdateThatFailed) {
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, made("f", "firmware"), {.verify = true}}),
              ExitCode::failure);
    EXPECT_TRUE(on.disks.journal.empty());
}

TEST_F(Read, AsksForNothingBehindTheDisksEnd) {
    on.registry.plugIn({.id = 1, .name = "Accessory", .disk = "disk2", .diskBytes = 1024});
    on.disks.disks["/dev/rdisk2"] = bytes(std::string(1024, 'x'));
    EXPECT_EQ(carriedOut(ReadInvocation{.offset = 1000, .length = INT64_MAX, .output = "-"}), ExitCode::success);
    EXPECT_EQ(out.str(), std::string(24, 'x'));
    EXPECT_TRUE(complained("Only 24 of 9223372036854775807 bytes could be read."));
    EXPECT_EQ(carriedOut(ReadInvocation{.offset = 1024, .length = 1, .output = "-"}), ExitCode::failure);
}

TEST_F(Read, SaysThatThereIsNoAccessory) {
    EXPECT_EQ(carriedOut(ReadInvocation{.offset = 0, .length = 1, .output = "-"}), ExitCode::failure);
    EXPECT_EQ(err.str(), "kestravctl: No accessory (USB 10d6:fd01) is attached. Plug it in and try again.\n");
    on.registry.breakDown();
    EXPECT_EQ(carriedOut(WriteInvocation{0, made("f", "abc")}), ExitCode::registryUnreachable);
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
    service.setBehaviour(confirms(1, 77));
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
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, file}), ExitCode::wrongCall);
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::icon, file}), ExitCode::wrongCall);
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
    EXPECT_EQ(carriedOut(UpdateInvocation{ImageKind::firmware, writeOnly}), ExitCode::wrongCall);
    EXPECT_TRUE(complained("can't be read"));
}

TEST_F(Commands, ListDrivesWhoseNamesAreNotUtf8) {
    on.volumes.mounted = {"/media/bad\xff", "/media/good"};
    EXPECT_EQ(carriedOut(DrivesInvocation{.json = true}), ExitCode::success);
    EXPECT_EQ(out.str(), "[\"/media/bad\uFFFD\",\"/media/good\"]\n");
}

TEST_F(FullStandardOutput, IsAnError) {
    plugIn(512);
    out.setstate(std::ios::badbit);
    EXPECT_EQ(carriedOut(DetectInvocation{}), ExitCode::wrongCall);
    EXPECT_TRUE(complained("Standard output can't be written"));
}

}  // namespace
}  // namespace kestrav
