#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <string>

#include "services/disk/AccessoryNode.h"
#include "services/disk/SysfsBlockDevices.h"
#include "services/disk/openDisk.h"
#include "tests/TemporaryFolder.h"
#include "tests/services/SimulatedAccessory.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t mebibyte = std::size_t{1} << 20U;

std::string refusalOfDisk() {
    const auto node = findDisk(SysfsBlockDevices(), "/dev/rsdzz", "sdzz");
    return node ? std::string() : node.problem().sentence;
}

TEST(FindDisk, KnowsTheAccessorysDisk) {
    const SimulatedAccessory accessory(patternOf(2 * mebibyte));
    const auto node = findDisk(SysfsBlockDevices(), "/dev/rsdzz", "sdzz");
    ASSERT_TRUE(node) << node.problem().sentence;
    EXPECT_EQ(node.value().path, "/dev/sdzz");
    EXPECT_EQ(node.value().device.name, "sdzz");
    EXPECT_EQ(node.value().device.bytes, 2 * mebibyte);
    EXPECT_EQ(node.value().device.logicalBlockSize, 512U);
    EXPECT_FALSE(node.value().device.diskSequence);
}

TEST(FindDisk, ReadsBlockSizeAndSequence) {
    const SimulatedAccessory accessory(patternOf(mebibyte),
                                       {{"logical_block_size=512", "logical_block_size=4096\nA: diskseq=77"}});
    const auto node = findDisk(SysfsBlockDevices(), "/dev/rsdzz", "sdzz");
    ASSERT_TRUE(node);
    EXPECT_EQ(node.value().device.logicalBlockSize, 4096U);
    EXPECT_EQ(node.value().device.diskSequence, 77U);
}

TEST(FindFirstPartition, KnowsTheAccessorysFirstPartition) {
    const SimulatedAccessory accessory(patternOf(mebibyte));
    const auto node = findFirstPartition(SysfsBlockDevices(), "/dev/sdzzs1", "sdzz");
    ASSERT_TRUE(node) << node.problem().sentence;
    EXPECT_EQ(node.value().path, "/dev/sdzz1");
    EXPECT_EQ(node.value().device.diskName, "sdzz");
}

TEST(SysfsBlockDevices, ListsADiskWithItsPartitions) {
    const SimulatedAccessory accessory(patternOf(mebibyte));
    const SysfsBlockDevices devices;
    const auto node = findDisk(devices, "/dev/rsdzz", "sdzz");
    ASSERT_TRUE(node);
    const dev_t disk = node.value().device.number;
    const auto family = devices.diskAndPartitions(disk);
    ASSERT_TRUE(family);
    EXPECT_EQ(family.value(), (std::vector<dev_t>{disk, disk + 1}));
    EXPECT_FALSE(devices.diskAndPartitions(disk + 99));
}

TEST(SysfsBlockDevices, NamesWhatIsBuiltOnTop) {
    const SimulatedAccessory accessory(patternOf(mebibyte));
    const SysfsBlockDevices devices;
    const auto node = findDisk(devices, "/dev/rsdzz", "sdzz");
    ASSERT_TRUE(node);
    EXPECT_TRUE(devices.builtOnTopOf(node.value().device.number).empty());
    const fs::path sysfs = accessory.nodes().parent_path() / std::string(SimulatedAccessory::diskPath).substr(1);
    fs::create_directories(sysfs / "sdzz1/holders/dm-0");
    EXPECT_EQ(devices.builtOnTopOf(node.value().device.number), std::vector<std::string>{"dm-0"});
}

struct WrongDiskRow {
    std::string name;
    SimulatedAccessory::Edits edits;
    std::function<void(const fs::path&)> change;  // of the simulated /dev
    std::string said;

    friend void PrintTo(const WrongDiskRow& row, std::ostream* out) { *out << row.name; }
};

class WrongDisk : public testing::TestWithParam<WrongDiskRow> {};

TEST_P(WrongDisk, IsRefused) {
    const SimulatedAccessory accessory(patternOf(mebibyte), GetParam().edits);
    if (GetParam().change) GetParam().change(accessory.nodes());
    const std::string sentence = refusalOfDisk();
    EXPECT_NE(sentence.find(GetParam().said), std::string::npos) << sentence;
}

void leadTo(const fs::path& alias, const fs::path& target) {
    fs::remove(alias);
    fs::create_symlink(target, alias);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WrongDisk,
    testing::Values(
        WrongDiskRow{"MissingAlias",
                     {},
                     [](const fs::path& dev) { fs::remove(dev / "rsdzz"); },
                     "there is no /dev/rsdzz; is the accessory plugged in"},
        WrongDiskRow{"DanglingAlias", {}, [](const fs::path& dev) { fs::remove(dev / "sdzz"); }, "there is no"},
        WrongDiskRow{"PlainFile",
                     {},
                     [](const fs::path& dev) {
                         std::ofstream(dev.parent_path() / "file") << "x";
                         leadTo(dev / "rsdzz", dev.parent_path() / "file");
                     },
                     "leads to /file, outside of /dev"},
        WrongDiskRow{"FileBelowDev",
                     {},
                     [](const fs::path& dev) {
                         fs::create_directory(dev / "shm");
                         fs::rename(dev / "sdzz", dev / "shm/sdzz");
                         leadTo(dev / "rsdzz", dev / "shm/sdzz");
                     },
                     "leads to /dev/shm/sdzz, outside of /dev"},
        WrongDiskRow{"CharacterDevice",
                     {},
                     [](const fs::path& dev) { fs::permissions(dev / "sdzz", fs::perms(0600)); },
                     "is not a disk"},
        WrongDiskRow{"Partition",
                     {},
                     [](const fs::path& dev) { leadTo(dev / "rsdzz", dev / "sdzz1"); },
                     "/dev/sdzz1 is a partition, not a whole disk"},
        WrongDiskRow{"OtherProduct", {{"idProduct=fd01", "idProduct=fd02"}}, {}, "is not on the accessory"},
        WrongDiskRow{"OtherVendor", {{"idVendor=10d6", "idVendor=10d7"}}, {}, "is not on the accessory"},
        WrongDiskRow{"LongerIdentifier", {{"idProduct=fd01", "idProduct=fd011"}}, {}, "is not on the accessory"},
        WrongDiskRow{"NotOnUsb", {{"DEVTYPE=usb_device", "DEVTYPE=other"}}, {}, "is not on the accessory"},
        WrongDiskRow{"BehindAnotherUsbDevice",
                     {{"SUBSYSTEM=usb\nE: DEVTYPE=usb_interface",
                       "SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nA: idVendor=1234\nA: idProduct=fd01"}},
                     {},
                     "is not on the accessory"},
        WrongDiskRow{"Unknown",
                     {},
                     [](const fs::path& dev) { leadTo(dev / ".node/sdzz", "131:999"); },
                     "does not know the disk"},
        WrongDiskRow{"FolderOfAnotherNumber", {{"MINOR=720", "MINOR=736"}}, {}, "does not know the disk"},
        WrongDiskRow{"FolderBehindALink",
                     {},
                     [](const fs::path& dev) {
                         const fs::path devices = dev.parent_path() / "sys/devices";
                         fs::rename(devices / "pci0000:00", devices / "elsewhere");
                         fs::create_directory_symlink("elsewhere", devices / "pci0000:00");
                     },
                     "does not know the disk"},
        WrongDiskRow{"FolderOutsideOfDevices",
                     {},
                     [](const fs::path& dev) {
                         const fs::path sysfs = dev.parent_path() / "sys";
                         const fs::path link = sysfs / "dev/block/131:720";
                         const std::string target = fs::read_symlink(link).string();
                         fs::rename(sysfs / "devices", sysfs / "strange");
                         leadTo(link, "../../strange" + target.substr(std::string("../../devices").size()));
                     },
                     "does not know the disk"},
        WrongDiskRow{"WayBackUp",
                     {},
                     [](const fs::path& dev) {
                         const fs::path link = dev.parent_path() / "sys/dev/block/131:720";
                         const std::string target = fs::read_symlink(link).string();
                         leadTo(link, "../../devices/.." + target.substr(std::string("../..").size()));
                     },
                     "does not know the disk"},
        WrongDiskRow{"NoSize", {{"size=2048", "size=-1"}}, {}, "does not know the disk"},
        WrongDiskRow{"AbsurdSize", {{"size=2048", "size=18446744073709551615"}}, {}, "does not know the disk"},
        WrongDiskRow{
            "AbsurdBlock", {{"logical_block_size=512", "logical_block_size=513"}}, {}, "does not know the disk"}),
    [](const auto& row) { return row.param.name; });

TEST(FindDisk, RefusesAnAliasThatLeadsToADiskOfAnotherName) {
    const SimulatedAccessory accessory(patternOf(mebibyte), {{"S: rsdzz", "S: rsdzy"}});
    const auto node = findDisk(SysfsBlockDevices(), "/dev/rsdzy", "sdzy");
    ASSERT_FALSE(node);
    EXPECT_EQ(node.problem().sentence, "/dev/rsdzy leads to the disk sdzz.");
}

TEST(FindFirstPartition, RefusesAnotherPartitionAndTheWholeDisk) {
    for (const char* edit : {"partition=2", "partition=", "partition=x"}) {
        const SimulatedAccessory accessory(patternOf(mebibyte), {{"partition=1", edit}});
        const auto node = findFirstPartition(SysfsBlockDevices(), "/dev/sdzzs1", "sdzz");
        ASSERT_FALSE(node);
        EXPECT_EQ(node.problem().sentence, "/dev/sdzz1 is not the accessory's first partition.");
    }
    const SimulatedAccessory accessory(patternOf(mebibyte));
    leadTo(accessory.nodes() / "sdzzs1", accessory.nodes() / "sdzz");
    EXPECT_FALSE(findFirstPartition(SysfsBlockDevices(), "/dev/sdzzs1", "sdzz"));
}

struct SwapRow {
    std::string name;
    std::function<void(SimulatedAccessory&)> swap;
    std::string said;

    friend void PrintTo(const SwapRow& row, std::ostream* out) { *out << row.name; }
};

class SwappedDisk : public testing::TestWithParam<SwapRow> {};

TEST_P(SwappedDisk, IsRefusedAfterItWasOpened) {
    SimulatedAccessory accessory(patternOf(mebibyte), {{"removable=1", "removable=1\nA: diskseq=77"}});
    const SysfsBlockDevices devices;
    const auto judged = findDisk(devices, "/dev/rsdzz", "sdzz");
    ASSERT_TRUE(judged);
    ASSERT_TRUE(openDisk(devices, judged.value(), DiskUse::write));
    GetParam().swap(accessory);
    for (const DiskUse use : {DiskUse::read, DiskUse::write}) {
        const auto disk = openDisk(devices, judged.value(), use);
        ASSERT_FALSE(disk);
        EXPECT_NE(disk.problem().sentence.find(GetParam().said), std::string::npos) << disk.problem().sentence;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SwappedDisk,
    testing::Values(
        SwapRow{"OtherAccessory", [](SimulatedAccessory& bed) { bed.setAttribute(bed.usbPath, "idProduct", "fd02"); },
                "another disk took the place of sdzz"},
        SwapRow{"OtherSequence", [](SimulatedAccessory& bed) { bed.setAttribute(bed.diskPath, "diskseq", "78"); },
                "another disk took the place"},
        SwapRow{"OtherSize", [](SimulatedAccessory& bed) { bed.setAttribute(bed.diskPath, "size", "4096"); },
                "another disk took the place"},
        SwapRow{"OtherNumber", [](SimulatedAccessory& bed) { leadTo(bed.nodes() / ".node/sdzz", "131:721"); },
                "another disk took the place"},
        SwapRow{"PlainFile", [](SimulatedAccessory& bed) { fs::permissions(bed.nodes() / "sdzz", fs::perms(0600)); },
                "another disk took the place"},
        SwapRow{"Link",
                [](SimulatedAccessory& bed) {
                    fs::rename(bed.nodes() / "sdzz", bed.nodes() / "sdzx");
                    fs::create_symlink(bed.nodes() / "sdzx", bed.nodes() / "sdzz");
                },
                "was replaced by a link"},
        SwapRow{"Nothing", [](SimulatedAccessory& bed) { fs::remove(bed.nodes() / "sdzz"); },
                "No such file or directory"}),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace kestrav
