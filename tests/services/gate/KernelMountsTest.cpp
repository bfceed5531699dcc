// Odd mounts of the accessory's disk, and a disk of large blocks, on a real kernel. Needs root.

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/mount.h>

#include "tests/TemporaryFolder.h"
#include "tests/services/LoopDisk.h"
#include "tests/services/gate/GateOnKernel.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(GateOnKernel, UnmountsWhatIsBoundElsewhereToo) {
    makeFileSystem();
    mountAt(place_);
    const fs::path part = folder_.path() / "part";
    fs::create_directories(place_ / "folder");
    fs::create_directories(part);
    ASSERT_EQ(::mount((place_ / "folder").c_str(), part.c_str(), nullptr, MS_BIND, nullptr), 0);
    EXPECT_EQ(unmount(),
              "Unmounted " + disk_->partitionName() + " from " + part.string() + " and " + place_.string() + ".");
    EXPECT_FALSE(isMounted());
    EXPECT_THAT(write(folder_.file("image", "x")), StartsWith("Wrote 1 bytes"));
}

TEST_F(GateOnKernel, UnmountsOneMountOnTopOfAnotherOfTheSameDisk) {
    makeFileSystem();
    mountAt(place_);
    ASSERT_EQ(::mount(place_.c_str(), place_.c_str(), nullptr, MS_BIND, nullptr), 0);
    EXPECT_THAT(unmount(), StartsWith("Unmounted " + disk_->partitionName() + " from " + place_.string()));
    EXPECT_FALSE(isMounted());
    EXPECT_THAT(write(folder_.file("image", "x")), StartsWith("Wrote 1 bytes"));
}

TEST_F(GateOnKernel, UnmountsAReadOnlyMountToo) {
    makeFileSystem();
    mountAt(place_);
    ASSERT_EQ(::mount(nullptr, place_.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
    EXPECT_THAT(write(folder_.file("image", "x")), StartsWith("Wrote 1 bytes"));
    EXPECT_FALSE(isMounted());
}

TEST_F(GateOnKernel, UnmountsAPlaceWhateverItsNameHolds) {
    makeFileSystem();
    const fs::path odd = folder_.path() / "new\nline \t\\040 \xe2\x80\xae\xff %n";
    mountAt(odd);
    const std::string answer = unmount();
    EXPECT_THAT(answer, StartsWith("Unmounted " + disk_->partitionName() + " from "));
    EXPECT_THAT(answer, HasSubstr(R"(new\x0aline \x09\\040 \u{202e})"));
    EXPECT_TRUE(std::ranges::none_of(answer, [](char byte) { return byte == '\n' || byte == '\t' || byte == '\xff'; }));
    EXPECT_FALSE(isMounted());
    EXPECT_THAT(write(folder_.file("image", "x")), StartsWith("Wrote 1 bytes"));
}

TEST_F(GateOnKernel, UnmountsTheWholeDiskWhereThatIsWhatIsMounted) {
    const std::string node = "/dev/" + disk_->name();
    ASSERT_EQ(std::system(("mkfs.ext4 -q -F " + node + " 2048 >/dev/null 2>&1").c_str()), 0);
    fs::create_directories(place_);
    ASSERT_EQ(::mount(node.c_str(), place_.c_str(), "ext4", 0, nullptr), 0);
    const std::string answer = write(folder_.file("image", "x"));
    EXPECT_THAT(answer, StartsWith("Wrote 1 bytes to " + disk_->name() + " at block 1536, verified, "));
    EXPECT_THAT(answer, testing::EndsWith(" It was mounted again and was unmounted from " + place_.string() + "."));
    EXPECT_THAT(contentsOf("/proc/self/mountinfo"), testing::Not(HasSubstr(" - ext4 " + node + " ")));
}

TEST_F(GateOnKernel, WritesTheImageAloneOntoADiskOfLargeBlocks) {
    disk_.reset();
    disk_.emplace(folder_.path() / "disk", LoopDisk::Shape{.blockBytes = 4096});
    makeNode("/dev/" + disk_->name(), disk_->number());
    fs::remove("/dev/r" + disk_->name());
    fs::create_symlink(disk_->name(), "/dev/r" + disk_->name());
    const std::string image = patternOf(40'001, 3);
    // Neither end of it is one of a large block.
    EXPECT_THAT(write(folder_.file("image", image), 1537),
                StartsWith("Wrote 40001 bytes to " + disk_->name() + " at block 1537, verified, "));
    std::string expected = before_;
    expected.replace(1537 * 512, image.size(), image);
    EXPECT_TRUE(onDisk() == expected);
}

}  // namespace
}  // namespace kestrav
