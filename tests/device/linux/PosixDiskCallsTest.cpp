#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <thread>

#include "base/UniqueFd.h"
#include "device/linux/MountinfoVolumes.h"
#include "device/linux/PosixDiskCalls.h"
#include "tests/TemporaryFolder.h"
#include "tests/device/fakes/bytes.h"
#include "tests/device/linux/PrivateMounts.h"
#include "tests/services/LoopDisk.h"
#include "tests/simulator/ShellRun.h"
#include "tests/socket/SignalShower.h"

namespace kestrav {
namespace {

class PosixDisks : public ::testing::Test {
  protected:
    std::string diskOf(const std::string& content) {
        std::string path = folder_.path() / "disk";
        std::ofstream(path) << content;
        return path;
    }
    static std::string contentOf(const std::string& path) {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    TemporaryFolder folder_;
    PosixDiskCalls disks_;
};

TEST_F(PosixDisks, ReadAtTheOffset) {
    const int descriptor = disks_.open(diskOf("0123456789"), DiskAccess::readOnly);
    ASSERT_GT(descriptor, 0);
    std::vector<std::byte> buffer = bytes("....");
    EXPECT_EQ(disks_.pread(descriptor, buffer, 3), 4);
    EXPECT_EQ(buffer, bytes("3456"));
    EXPECT_EQ(disks_.pread(descriptor, buffer, 8), 2);
    EXPECT_EQ(disks_.pread(descriptor, buffer, 10), 0);
    EXPECT_LT(disks_.pread(descriptor, buffer, -1), 0);
    disks_.close(descriptor);
}

TEST_F(PosixDisks, WriteAtTheOffset) {
    const std::string path = diskOf("0123456789");
    const int descriptor = disks_.open(path, DiskAccess::readAndWrite);
    ASSERT_GT(descriptor, 0);
    EXPECT_EQ(disks_.pwrite(descriptor, bytes("XY"), 3), 2);
    EXPECT_EQ(disks_.pwrite(descriptor, {}, 0), 0);
    EXPECT_LT(disks_.pwrite(descriptor, bytes("XY"), -1), 0);
    std::vector<std::byte> buffer = bytes(".");
    EXPECT_EQ(disks_.pread(descriptor, buffer, 4), 1);
    EXPECT_EQ(buffer, bytes("Y"));
    disks_.close(descriptor);
    EXPECT_EQ(contentOf(path), "012XY56789");
}

TEST_F(PosixDisks, WriteNothingToADiskOpenedForReading) {
    const std::string path = diskOf("0123");
    const int descriptor = disks_.open(path, DiskAccess::readOnly);
    EXPECT_LT(disks_.pwrite(descriptor, bytes("XY"), 0), 0);
    disks_.close(descriptor);
    EXPECT_EQ(contentOf(path), "0123");
}

TEST_F(PosixDisks, OpenNothingThatIsMissingAndMakeNothing) {
    const std::string path = folder_.path() / "missing";
    EXPECT_LT(disks_.open(path, DiskAccess::readOnly), 0);
    EXPECT_LT(disks_.open(path, DiskAccess::readAndWrite), 0);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(PosixDisks, KeepNodesFromChildrenAndCloseThem) {
    const int descriptor = disks_.open(diskOf("x"), DiskAccess::readOnly);
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    disks_.close(descriptor);
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1);
}

TEST_F(PosixDisks, OpenInSpiteOfSignals) {
    const std::string path = folder_.path() / "pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    // Opening a pipe waits for its other end, which comes after many signals.
    const SignalShower shower;
    std::thread writer([&] {
        shower.waitForMany();
        // For reading too: that never waits, so a reader that has given up doesn't hang the test.
        const UniqueFd otherEnd(::open(path.c_str(), O_RDWR | O_CLOEXEC));
    });
    const int descriptor = disks_.open(path, DiskAccess::readOnly);
    writer.join();
    EXPECT_GE(shower.interruptions(), SignalShower::kMany);
    EXPECT_GT(descriptor, 0);
    disks_.close(descriptor);
}

TEST_F(PosixDisks, ReadAndWriteABlockDevice) {
    if (::access("/dev/loop-control", R_OK | W_OK) != 0)
        GTEST_SKIP() << "attaching a loop device takes root and a kernel that has them";
    const std::string path = diskOf(std::string(1 << 20, '0'));
    ShellRun attached(std::string("flock ") + kLoopLock + " losetup --find --show " + path);
    ASSERT_EQ(attached.status, 0) << attached.output;
    attached.output.pop_back();
    const int descriptor = disks_.open(attached.output, DiskAccess::readAndWrite);
    ASSERT_GT(descriptor, 0);
    EXPECT_EQ(disks_.pwrite(descriptor, bytes("XY"), 1000), 2);
    std::vector<std::byte> buffer = bytes("....");
    EXPECT_EQ(disks_.pread(descriptor, buffer, 999), 4);
    EXPECT_EQ(buffer, bytes("0XY0"));
    EXPECT_EQ(disks_.pread(descriptor, buffer, 1 << 20), 0);
    EXPECT_LT(disks_.pwrite(descriptor, bytes("XY"), 1 << 20), 0) << "a disk doesn't grow";
    disks_.close(descriptor);
    EXPECT_EQ(ShellRun("losetup --detach " + attached.output).status, 0);
    EXPECT_EQ(contentOf(path).substr(999, 4), "0XY0");
}

TEST_F(PosixDisks, UnmountWhatIsMountedThere) {
    const std::string path = folder_.path();
    const int result = withPrivateMounts([&] {
        if (::mount("none", path.c_str(), "tmpfs", 0, nullptr) != 0) return 2;
        disks_.unmount(path);
        const std::vector<std::string> left = MountinfoVolumes().mountPoints().value();
        return std::find(left.begin(), left.end(), path) == left.end() ? 0 : 1;
    });
    if (result == -2) GTEST_SKIP() << "mounting takes root";
    EXPECT_EQ(result, 0);
}

TEST_F(PosixDisks, LeaveMountedWhatIsInUse) {
    const std::string path = folder_.path();
    const int result = withPrivateMounts([&] {
        if (::mount("none", path.c_str(), "tmpfs", 0, nullptr) != 0) return 2;
        const std::ofstream inUse(path + "/file");
        disks_.unmount(path);
        const std::vector<std::string> left = MountinfoVolumes().mountPoints().value();
        return std::find(left.begin(), left.end(), path) != left.end() ? 0 : 1;
    });
    if (result == -2) GTEST_SKIP() << "mounting takes root";
    EXPECT_EQ(result, 0);
}

}  // namespace
}  // namespace kestrav
