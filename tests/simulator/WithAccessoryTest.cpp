#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/TemporaryFolder.h"
#include "tests/places.h"
#include "tests/simulator/ShellRun.h"

namespace kestrav {
namespace {

using ::testing::HasSubstr;

const std::string simulator = places::ofSource("simulator");

class WithAccessory : public ::testing::Test {
  protected:
    std::string image() const { return folder_.path() / "disk image"; }
    // Runs a shell line with the accessory plugged in.
    ShellRun run(const std::string& line, const std::string& options = "") const {
        return ShellRun(simulator + "/with-accessory " + options + " sh -c '" + line + "' 2>&1");
    }
    ShellRun runOnImage(const std::string& line) const { return run(line, "--disk '" + image() + "'"); }
    void makeDisk(int mib) const {
        ASSERT_EQ(ShellRun(simulator + "/make-disk '" + image() + "' " + std::to_string(mib)).status, 0);
    }

    std::string bytesAt(std::streamoff offset, std::size_t count) const {
        std::ifstream file(image());
        std::string bytes(count, '?');
        file.seekg(offset).read(bytes.data(), static_cast<std::streamsize>(count));
        return bytes;
    }
    // What lies in the folder beside the image.
    int filesLeft() const {
        int count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path()))
            count += entry.path() == image() ? 0 : 1;
        return count;
    }

    TemporaryFolder folder_;
};

struct StatusRow {
    const char* title;
    std::string line;
    int status;
};

void PrintTo(const StatusRow& row, std::ostream* out) {
    *out << row.title;
}

class ExitStatus : public WithAccessory, public ::testing::WithParamInterface<StatusRow> {};

TEST_P(ExitStatus, IsTheCommandsOwnAndNothingIsLeft) {
    EXPECT_EQ(runOnImage(GetParam().line).status, GetParam().status);
    EXPECT_EQ(filesLeft(), 0);
    struct stat info {};
    ASSERT_EQ(::stat(image().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & S_ISVTX, 0U);
    EXPECT_EQ(info.st_nlink, 1U);
}

INSTANTIATE_TEST_SUITE_P(Rows, ExitStatus,
                         ::testing::Values(StatusRow{"Success", "true", 0}, StatusRow{"Failure", "exit 7", 7},
                                           StatusRow{"NoSuchCommand", "exec /no/such/command", 127},
                                           StatusRow{"Killed", "kill -KILL $$", 137},
                                           StatusRow{"Terminated", "kill -TERM $$", 143},
                                           StatusRow{"Interrupted", "kill -INT $$", 130}),
                         [](const auto& row) { return row.param.title; });

TEST_F(WithAccessory, MakesAMissingDiskWithAPartitionBehindTheAreas) {
    EXPECT_EQ(runOnImage("true").status, 0);
    EXPECT_EQ(std::filesystem::file_size(image()), 16U << 20);
    EXPECT_EQ(bytesAt(510, 2), "\x55\xAA");
    const ShellRun table("sfdisk --dump '" + image() + "'");
    EXPECT_THAT(table.output, HasSubstr("start=        8192, size=       24576, type=c"));
}

TEST_F(WithAccessory, KeepsWhatWasWrittenEvenByAKilledCommand) {
    const ShellRun killed =
        runOnImage("printf firmware | dd of=/dev/rsdzz bs=512 seek=1536 conv=notrunc status=none; kill -KILL $$");
    EXPECT_EQ(killed.status, 137);
    EXPECT_EQ(bytesAt(std::streamoff{1536} * 512, 8), "firmware");
    EXPECT_THAT(runOnImage("dd if=/dev/sdzz bs=512 skip=1536 count=1 status=none | head -c 8").output, "firmware");
}

TEST_F(WithAccessory, ShowsBlockNodesAndAliasesThatResolve) {
    const ShellRun nodes =
        run("stat -c \"%F %t:%T\" /dev/sdzz /dev/sdzz1; stat -L -c \"%F %t:%T\" /dev/rsdzz /dev/sdzzs1; "
            "readlink -f /dev/rsdzz /dev/sdzzs1; readlink /dev/rsdzz");
    EXPECT_EQ(nodes.output,
              "block special file 83:2d0\nblock special file 83:2d1\nblock special file 83:2d0\n"
              "block special file 83:2d1\n/dev/sdzz\n/dev/sdzz1\nsdzz\n");
}

TEST_F(WithAccessory, ShowsTheImagesSizeAndPartition) {
    makeDisk(64);
    const ShellRun sizes = runOnImage(
        "cd /sys/class/block; cat sdzz/size sdzz1/start sdzz1/size sdzz1/partition; "
        "cat sdzz/removable sdzz/queue/logical_block_size");
    EXPECT_EQ(sizes.status, 0);
    EXPECT_THAT(sizes.output, HasSubstr("131072\n8192\n122880\n1"));
}

TEST_F(WithAccessory, ShowsNoPartitionWhereTheTableHasNone) {
    std::ofstream(image()).close();
    std::filesystem::resize_file(image(), 1 << 20);
    EXPECT_EQ(runOnImage("cat /sys/class/block/sdzz/size; ls /dev").output, "2048\nbus\nrsdzz\nsdzz\n");
}

TEST_F(WithAccessory, IsInheritedByGrandchildren) {
    EXPECT_EQ(run("sh -c \"sh -c true; cat /sys/bus/usb/devices/1-2/product\"").output, "Kestrav Accessory");
}

TEST_F(WithAccessory, HandsOnStandardInputAndTheCallersTemporaryFolder) {
    EXPECT_EQ(ShellRun("echo in | TMPDIR=/var/tmp " + simulator + "/with-accessory --disk '" + image() +
                       "' sh -c 'cat; echo $TMPDIR'")
                  .output,
              "in\n/var/tmp\n");
}

TEST_F(WithAccessory, PassesSignalsOn) {
    const ShellRun ended(simulator + "/with-accessory --disk '" + image() +
                         "' sh -c 'trap \"echo ending; exit 9\" TERM; echo $$ ready; while :; do sleep 0.05; done' "
                         "> '" +
                         image() +
                         ".out' & child=$!\n"
                         "until grep -q ready '" +
                         image() +
                         ".out' 2>/dev/null; do sleep 0.02; done\n"
                         "kill -TERM $child; wait $child; status=$?; cat '" +
                         image() + ".out'; rm '" + image() + ".out'; exit $status");
    EXPECT_EQ(ended.status, 9);
    EXPECT_THAT(ended.output, HasSubstr("ending"));
    EXPECT_EQ(filesLeft(), 0);
}

TEST_F(WithAccessory, NeedsNoRights) {
    if (::geteuid() != 0) GTEST_SKIP() << "every other test here already ran without rights";
    std::filesystem::permissions(folder_.path(), std::filesystem::perms::all);
    // A copy, since the sources may lie in a home that is closed to others.
    const std::filesystem::path copy = folder_.path() / "simulator";
    std::filesystem::copy(simulator, copy, std::filesystem::copy_options::recursive);
    const ShellRun asNobody("setpriv --reuid=65534 --regid=65534 --clear-groups " + copy.string() +
                            "/with-accessory --disk '" + image() +
                            "' sh -c 'id -u; printf x | dd of=/dev/rsdzz bs=512 seek=2048 conv=notrunc status=none'");
    EXPECT_EQ(asNobody.status, 0);
    EXPECT_EQ(asNobody.output, "65534\n");
    EXPECT_EQ(bytesAt(std::streamoff{2048} * 512, 1), "x");
}

struct DeviceRow {
    const char* title;
    std::string options;
    std::string seen;
};

void PrintTo(const DeviceRow& row, std::ostream* out) {
    *out << row.title;
}

class PluggedIn : public WithAccessory, public ::testing::WithParamInterface<DeviceRow> {};

TEST_P(PluggedIn, AreTheDevicesThatWereAskedFor) {
    const ShellRun seen =
        run("cd /sys/bus/usb/devices; for d in *; do [ ! -e $d/idVendor ] || "
            "echo $(cat $d/idVendor):$(cat $d/product 2>/dev/null); done | sort | uniq -c | "
            "sed \"s/^ *//; s/Device .*/Device/\" | cut -c 1-26 | sort | uniq -c | sed \"s/^ *//\"; "
            "cd /dev; ls -d sdz? 2>/dev/null",
            GetParam().options);
    EXPECT_EQ(seen.output, GetParam().seen);
}

INSTANTIATE_TEST_SUITE_P(Rows, PluggedIn,
                         ::testing::Values(DeviceRow{"Accessory", "", "1 1 10d6:Kestrav Accessory\nsdzz\n"},
                                           DeviceRow{"TwoAccessories", "--device two-accessories",
                                                     "1 2 10d6:Kestrav Accessory\nsdzy\nsdzz\n"},
                                           DeviceRow{"NoDisk", "--device accessory-without-disk",
                                                     "1 1 10d6:Kestrav Accessory\n"},
                                           DeviceRow{"NoName", "--device accessory-without-name", "1 1 10d6:\nsdzz\n"},
                                           DeviceRow{"AHundredOthers", "--others 100",
                                                     "1 1 10d6:Kestrav Accessory\n100 1 1d6b:Other Device\nsdzz\n"}),
                         [](const auto& row) { return row.param.title; });

TEST_F(WithAccessory, GivesTheSecondOfTwoAccessoriesTheImage) {
    const ShellRun both =
        run("printf B | dd of=/dev/sdzz conv=notrunc status=none; "
            "printf A | dd of=/dev/sdzy conv=notrunc status=none",
            "--device two-accessories --disk '" + image() + "'");
    EXPECT_EQ(both.status, 0);
    EXPECT_EQ(bytesAt(0, 1), "B");
}

TEST_F(WithAccessory, WorksFromTheRootFolder) {
    const std::string relative = image().substr(1);
    const ShellRun seen(
        "cd / && " + simulator + "/with-accessory --disk '" + relative +
        "' sh -c 'udevadm info -q property /dev/sdzz | grep ^DEVNAME && cmp /etc/passwd etc/passwd' 2>&1");
    EXPECT_EQ(seen.output, "DEVNAME=/dev/sdzz\n");
    EXPECT_EQ(seen.status, 0);
    EXPECT_EQ(filesLeft(), 0);
}

TEST_F(WithAccessory, IsRefusedInTheFoldersThatAreSimulated) {
    const ShellRun refused("cd /sys/class && " + simulator + "/with-accessory true 2>&1");
    EXPECT_EQ(refused.status, 125);
    EXPECT_THAT(refused.output, HasSubstr("start it in another folder"));
}

class WrongCall : public WithAccessory, public ::testing::WithParamInterface<std::string> {};

TEST_P(WrongCall, IsRefusedInASentence) {
    const ShellRun refused(simulator + "/with-accessory " + GetParam() + " 2>&1");
    EXPECT_EQ(refused.status, 125);
    EXPECT_THAT(refused.output, HasSubstr("with-accessory"));
}

INSTANTIATE_TEST_SUITE_P(Rows, WrongCall,
                         ::testing::Values("", "--disk", "--others many true", "--device none true", "--wrong true",
                                           "--disk /no/such/folder/image true", "--disk /etc true"));

TEST_F(WithAccessory, NeverOverwritesAnImage) {
    std::ofstream(image()) << "precious";
    EXPECT_NE(ShellRun(simulator + "/make-disk '" + image() + "' 2>&1").status, 0);
    EXPECT_EQ(bytesAt(0, 8), "precious");
}

}  // namespace
}  // namespace kestrav
