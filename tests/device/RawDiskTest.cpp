#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/device/fakes/EngineOnFakes.h"
#include "tests/device/fakes/bytes.h"
#include "tests/sanitizers.h"

namespace kestrav {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct EngineWithDisk : EngineOnFakes {
    EngineWithDisk() {
        plugIn("disk2");
        disks.disks["/dev/rdisk2"] = bytes("0123456789");
        disks.disks["/dev/disk2"] = bytes("abcdefghij");
    }
    const std::vector<std::byte>& blockDisk() { return disks.disks["/dev/disk2"]; }
};

TEST(ReadDevice, ReadsTheRawNodeAtTheOffset) {
    EngineWithDisk on;
    EXPECT_EQ(on.engine.readDevice(3, 4), bytes("3456"));
    EXPECT_THAT(on.disks.journal, ElementsAre("open r /dev/rdisk2", "close"));
    EXPECT_THAT(on.lines(), IsEmpty());
}

TEST(ReadDevice, FillsUpAShortReadWithZeros) {
    EngineWithDisk on;
    on.disks.longestTransfer = 2;
    EXPECT_EQ(on.engine.readDevice(0, 4), bytes({"01\0\0", 4}));
}

TEST(ReadDevice, TakesWhatIsThereBeforeTheEnd) {
    EngineWithDisk on;
    EXPECT_EQ(on.engine.readDevice(8, 3), bytes({"89\0", 3}));
}

struct ReadRow {
    const char* title;
    std::int64_t offset;
    std::int64_t length;
};

void PrintTo(const ReadRow& row, std::ostream* out) {
    *out << row.title;
}

class ReadDeviceOfNothing : public ::testing::TestWithParam<ReadRow> {};

TEST_P(ReadDeviceOfNothing, DropsTheBuffer) {
    EngineWithDisk on;
    EXPECT_THAT(on.engine.readDevice(GetParam().offset, GetParam().length), IsEmpty());
    EXPECT_THAT(on.disks.openNodes, IsEmpty());
    EXPECT_THAT(on.lines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Rows, ReadDeviceOfNothing,
                         ::testing::Values(ReadRow{"NoLength", 0, 0}, ReadRow{"AtTheEnd", 10, 1},
                                           ReadRow{"PastTheEnd", INT64_MAX, 1}, ReadRow{"BeforeTheStart", -1, 1}),
                         [](const auto& row) { return row.param.title; });

// Sizes that no address space can hold.
class MoreThanMemory : public ::testing::TestWithParam<std::int64_t> {
  protected:
    void SetUp() override {
        if (!kMemoryIsOurs) GTEST_SKIP() << "the sanitizers end the process on such a request";
    }
};

TEST_P(MoreThanMemory, CannotBeRead) {
    EngineWithDisk on;
    EXPECT_THAT(on.engine.readDevice(0, GetParam()), IsEmpty());
    EXPECT_THAT(on.disks.openNodes, IsEmpty());
}

TEST_P(MoreThanMemory, CannotBeWritten) {
    EngineWithDisk on;
    EXPECT_FALSE(on.engine.writeDevice(0, GetParam(), bytes("XYZ")));
    EXPECT_EQ(on.blockDisk(), bytes("abcdefghij"));
    EXPECT_THAT(on.disks.openNodes, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Sizes, MoreThanMemory, ::testing::Values(INT64_MAX, INT64_MAX / 2));

TEST(ReadDevice, DropsTheBufferWhenTheReadFails) {
    EngineWithDisk on;
    on.disks.transfersFail = true;
    EXPECT_THAT(on.engine.readDevice(0, 4), IsEmpty());
    EXPECT_THAT(on.disks.journal, ElementsAre("open r /dev/rdisk2", "close"));
}

TEST(ReadDevice, StopsTheProcessOnANegativeLength) {
    EngineWithDisk on;
    EXPECT_EXIT(on.engine.readDevice(0, -1), ::testing::KilledBySignal(SIGABRT), "");
}

TEST(ReadDevice, KeepsTheRecordWhenTheRegistryIsOutOfReach) {
    EngineWithDisk on;
    on.engine.readDevice(0, 1);
    on.registry.breakDown();
    on.disks.journal.clear();
    EXPECT_THAT(on.engine.readDevice(0, 1), IsEmpty());
    EXPECT_THAT(on.disks.journal, IsEmpty());
    EXPECT_THAT(on.lines(), IsEmpty());
    EXPECT_EQ(on.engine.device.bsdName, "disk2");
}

TEST(WriteDevice, WritesTheBlockNodeAtTheOffset) {
    EngineWithDisk on;
    EXPECT_TRUE(on.engine.writeDevice(3, 2, bytes("XY")));
    EXPECT_EQ(on.blockDisk(), bytes("abcXYfghij"));
    EXPECT_EQ(on.disks.disks["/dev/rdisk2"], bytes("0123456789"));
    EXPECT_THAT(on.disks.journal, ElementsAre("open rw /dev/disk2", "close"));
    EXPECT_THAT(on.lines(), IsEmpty());
}

TEST(WriteDevice, WritesNoMoreThanTheLength) {
    EngineWithDisk on;
    EXPECT_TRUE(on.engine.writeDevice(0, 1, bytes("XYZ")));
    EXPECT_EQ(on.blockDisk(), bytes("Xbcdefghij"));
}

TEST(WriteDevice, WritesZerosBeyondTheData) {
    EngineWithDisk on;
    EXPECT_TRUE(on.engine.writeDevice(1, 5, bytes("XY")));
    EXPECT_EQ(on.blockDisk(), bytes({"aXY\0\0\0ghij", 10}));
}

TEST(WriteDevice, TakesNothingFromBehindTheData) {
    EngineWithDisk on;
    const std::vector<std::byte> more = bytes("XYZ");
    EXPECT_TRUE(on.engine.writeDevice(1, 3, std::span(more).first(2)));
    EXPECT_EQ(on.blockDisk(), bytes({"aXY\0efghij", 10}));
}

TEST(WriteDevice, WritesZerosForNoDataAtAll) {
    EngineWithDisk on;
    EXPECT_TRUE(on.engine.writeDevice(8, 2, {}));
    EXPECT_EQ(on.blockDisk(), bytes({"abcdefgh\0\0", 10}));
}

TEST(WriteDevice, CountsAShortWriteAsSuccess) {
    EngineWithDisk on;
    on.disks.longestTransfer = 1;
    EXPECT_TRUE(on.engine.writeDevice(0, 3, bytes("XYZ")));
    EXPECT_EQ(on.blockDisk(), bytes("Xbcdefghij"));
}

class WriteDeviceOfNothing : public ::testing::TestWithParam<ReadRow> {};

TEST_P(WriteDeviceOfNothing, IsAFailure) {
    EngineWithDisk on;
    EXPECT_FALSE(on.engine.writeDevice(GetParam().offset, GetParam().length, bytes("XYZ")));
    EXPECT_EQ(on.blockDisk(), bytes("abcdefghij"));
    EXPECT_THAT(on.disks.openNodes, IsEmpty());
    EXPECT_THAT(on.lines(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Rows, WriteDeviceOfNothing,
                         ::testing::Values(ReadRow{"NoLength", 0, 0}, ReadRow{"AtTheEnd", 10, 1},
                                           ReadRow{"BeforeTheStart", -1, 1}, ReadRow{"NegativeLength", 0, -1},
                                           ReadRow{"MostNegativeLength", 0, INT64_MIN}),
                         [](const auto& row) { return row.param.title; });

TEST(WriteDevice, FailsWhenTheWriteDoes) {
    EngineWithDisk on;
    on.disks.transfersFail = true;
    EXPECT_FALSE(on.engine.writeDevice(0, 3, bytes("XYZ")));
    EXPECT_THAT(on.disks.openNodes, IsEmpty());
}

TEST(WriteDevice, ForgetsTheDeviceWhenTheRegistryIsOutOfReach) {
    EngineWithDisk on;
    on.engine.writeDevice(0, 1, bytes("a"));
    on.registry.breakDown();
    on.disks.journal.clear();
    EXPECT_FALSE(on.engine.writeDevice(0, 1, bytes("X")));
    EXPECT_EQ(on.engine.device, DeviceObject{});
    EXPECT_THAT(on.disks.journal, IsEmpty());
    EXPECT_THAT(on.lines(), ElementsAre("Device not ready yet!"));
}

// What both operations do alike, with the node that each of them opens.
struct Transfer {
    const char* title;
    std::string opening;
    std::string node;
    bool (*succeeds)(KestravDevice&);
};

void PrintTo(const Transfer& transfer, std::ostream* out) {
    *out << transfer.title;
}

class RawIO : public ::testing::TestWithParam<Transfer> {};

TEST_P(RawIO, NeedsADiskAndLeavesOtherDrivesMountedWithoutOne) {
    EngineOnFakes on;
    on.volumes.mounted = {"/media/somebody"};
    EXPECT_FALSE(GetParam().succeeds(on.engine));
    EXPECT_THAT(on.lines(), ElementsAre("Device not ready yet!"));
    EXPECT_THAT(on.disks.journal, IsEmpty());
}

TEST_P(RawIO, LeavesOtherDrivesMountedWhenTheRegistryIsOutOfReach) {
    EngineWithDisk on;
    on.volumes.mounted = {"/media/somebody"};
    on.registry.breakDown();
    EXPECT_FALSE(GetParam().succeeds(on.engine));
    EXPECT_THAT(on.disks.journal, IsEmpty());
}

TEST_P(RawIO, NeedsADiskWithAName) {
    EngineOnFakes on;
    on.volumes.mounted = {"/media/somebody"};
    on.plugIn("");
    EXPECT_FALSE(GetParam().succeeds(on.engine));
    EXPECT_THAT(on.lines(), ElementsAre("Device not ready yet!"));
    EXPECT_THAT(on.disks.journal, IsEmpty());
}

TEST_P(RawIO, UnmountsTheFirstDriveOnlyAndBeforeItOpens) {
    EngineWithDisk on;
    on.volumes.mounted = {"/", "/media/b", "/media/a", "/run/media/u/c"};
    EXPECT_TRUE(GetParam().succeeds(on.engine));
    EXPECT_THAT(on.lines(),
                ElementsAre("Found drive: /media/b", "Found drive: /media/a", "Found drive: /run/media/u/c"));
    EXPECT_THAT(on.disks.journal, ElementsAre("unmount /media/b", GetParam().opening + "disk2", "close"));
}

TEST_P(RawIO, LooksForTheNodeOfADeviceWithoutADisk) {
    EngineOnFakes on;
    on.plugIn(std::nullopt);
    EXPECT_FALSE(GetParam().succeeds(on.engine));
    EXPECT_THAT(on.lines(), ElementsAre("Unabled to open " + GetParam().node + "nil"));
}

TEST_P(RawIO, SaysWhichNodeCannotBeOpened) {
    EngineOnFakes on;
    on.plugIn("disk2");
    EXPECT_FALSE(GetParam().succeeds(on.engine));
    EXPECT_THAT(on.lines(), ElementsAre("Unabled to open " + GetParam().node + "disk2"));
    EXPECT_THAT(on.disks.journal, ElementsAre(GetParam().opening + "disk2"));
}

TEST_P(RawIO, TakesADescriptorOfZeroForAFailureAndClosesIt) {
    EngineWithDisk on;
    on.disks.firstDescriptor = 0;
    EXPECT_FALSE(GetParam().succeeds(on.engine));
    EXPECT_THAT(on.lines(), ElementsAre("Unabled to open " + GetParam().node + "disk2"));
    EXPECT_THAT(on.disks.journal, ElementsAre(GetParam().opening + "disk2", "close"));
}

TEST_P(RawIO, GoesOnWithTheStaleNameOfAnUnpluggedAccessory) {
    EngineWithDisk on;
    EXPECT_TRUE(GetParam().succeeds(on.engine));
    on.registry.unplugAll();
    EXPECT_TRUE(GetParam().succeeds(on.engine));
}

INSTANTIATE_TEST_SUITE_P(
    Both, RawIO,
    ::testing::Values(Transfer{"Read", "open r /dev/r", "/dev/r",
                               [](KestravDevice& engine) { return !engine.readDevice(0, 4).empty(); }},
                      Transfer{"Write", "open rw /dev/", "/dev/",
                               [](KestravDevice& engine) { return engine.writeDevice(0, 1, bytes("X")); }}),
    [](const auto& row) { return row.param.title; });

}  // namespace
}  // namespace kestrav
