// Writing to a disk that a real kernel knows. Needs root.

#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "base/UniqueFd.h"
#include "services/disk/NodeBytes.h"
#include "services/disk/openDisk.h"
#include "tests/TemporaryFolder.h"
#include "tests/services/LoopDisk.h"
#include "tests/services/SlowFolder.h"
#include "tests/services/asker/FakeAsker.h"
#include "tests/services/gate/GateOnKernel.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

TEST_F(GateOnKernel, LetsTheDiskGoWhenTheImagesFileSystemStopsAnswering) {
    if (!SlowFolder::isPossible()) GTEST_SKIP() << "needs a kernel with FUSE";
    fs::create_directory(folder_.path() / "slow");
    const SlowFolder slow(folder_.path() / "slow", {.size = 3'000'000, .stallsFrom = 0});
    FakeAsker root(0);
    Gate gate(consent_, *devices_, mounts_, requests_, {},
              {.toOpen = std::chrono::seconds(20), .toRead = std::chrono::milliseconds(300)});
    const std::vector<std::string> arguments{"if=" + slow.image(), "of=/dev/r" + disk_->name(), "seek=1536", "bs=512"};
    EXPECT_EQ(gate.perform(root, "dd", arguments).text,
              "Failed: the file system of the image stopped answering. Nothing was written.");
    EXPECT_TRUE(onDisk() == before_);
    EXPECT_THAT(write(folder_.file("image", "x")), StartsWith("Wrote 1 bytes"));
}

TEST_F(GateOnKernel, WritesPastTheSystemsCache) {
    const std::string image = patternOf(3'000'001, 3);
    EXPECT_THAT(write(folder_.file("image", image)), HasSubstr("block 1536, verified, "));
    std::string expected = before_;
    expected.replace(1536 * 512, image.size(), image);
    EXPECT_TRUE(onDisk() == expected);
}

TEST_F(GateOnKernel, SaysWhereTheDiskTookNoMoreAndWritesOnceItDoesAgain) {
    // A memory that has less room than it says, as a forged stick has.
    const fs::path small = folder_.path() / "small";
    fs::create_directory(small);
    ASSERT_EQ(::mount("none", small.c_str(), "tmpfs", 0, "size=2M"), 0);
    std::ofstream(small / "disk").close();
    fs::resize_file(small / "disk", before_.size());
    disk_.reset();
    disk_.emplace(small / "disk");
    makeNode("/dev/" + disk_->name(), disk_->number());
    fs::remove("/dev/r" + disk_->name());
    fs::create_symlink(disk_->name(), "/dev/r" + disk_->name());
    const std::string image = folder_.file("image", patternOf(3'000'000, 3));
    EXPECT_THAT(write(image), testing::MatchesRegex("Failed: writing " + disk_->name() +
                                                    " from block 5632 on: (No space left on device|Input/output error)"
                                                    "\\. The accessory's memory may hold a mixture now: .*"));
    const std::string untouched(1536 * 512, '\0');
    EXPECT_TRUE(contentsOf(small / "disk").starts_with(untouched + patternOf(3'000'000, 3).substr(0, 2U << 20U)));
    ASSERT_EQ(::mount(nullptr, small.c_str(), nullptr, MS_REMOUNT, "size=8M"), 0);
    EXPECT_THAT(write(image), HasSubstr("block 1536, verified, "));
    EXPECT_TRUE(contentsOf(small / "disk").starts_with(untouched + patternOf(3'000'000, 3)));
    disk_.reset();
    ::umount2(small.c_str(), MNT_DETACH);
}

TEST_F(GateOnKernel, UnmountsOnceMoreBeforeAWrite) {
    makeFileSystem();
    mountAt(place_);
    const std::string answer = write(folder_.file("image", "x"));
    EXPECT_THAT(answer, StartsWith("Wrote 1 bytes to " + disk_->name() + " at block 1536, verified, "));
    EXPECT_THAT(answer, testing::EndsWith(" It was mounted again and was unmounted from " + place_.string() + "."));
    EXPECT_FALSE(isMounted());
}

TEST_F(GateOnKernel, KeepsTheDiskMountedForAnImageThatDoesNotCome) {
    if (!SlowFolder::isPossible()) GTEST_SKIP() << "needs a kernel with FUSE";
    makeFileSystem();
    mountAt(place_);
    fs::create_directory(folder_.path() / "slow");
    const SlowFolder slow(folder_.path() / "slow", {.size = 3'000'000, .stallsFrom = 2'500'000});
    FakeAsker root(0);
    Gate gate(consent_, *devices_, mounts_, requests_, {},
              {.toOpen = std::chrono::seconds(20), .toRead = std::chrono::milliseconds(300)});
    const std::vector<std::string> arguments{"if=" + slow.image(), "of=/dev/r" + disk_->name(), "seek=1536", "bs=512"};
    EXPECT_EQ(gate.perform(root, "dd", arguments).text,
              "Failed: the file system of the image stopped answering. Nothing was written.");
    EXPECT_TRUE(isMounted());
}

TEST_F(GateOnKernel, RefusesAnImageOnTheAccessoryItself) {
    makeFileSystem();
    mountAt(place_);
    std::ofstream(place_ / "image") << "x";
    EXPECT_EQ(write(place_ / "image"),
              "Refused: the image lies on the accessory itself; copy it to another disk first.");
    EXPECT_TRUE(isMounted());
}

TEST_F(GateOnKernel, LetsTwoWritersNeverShareADisk) {
    const std::string one = patternOf(3'000'000, 3);
    const std::string two = patternOf(3'000'000, 4);
    const std::string images[] = {folder_.file("one", one), folder_.file("two", two)};
    std::vector<pid_t> writers;
    for (const std::string& image : images) {
        writers.push_back(::fork());
        if (writers.back() == 0) ::_exit(write(image).starts_with("Wrote") ? 0 : 1);
    }
    int successes = 0;
    for (const pid_t writer : writers) {
        int status = 0;
        ::waitpid(writer, &status, 0);
        successes += status == 0 ? 1 : 0;
    }
    EXPECT_GE(successes, 1);
    const std::string disk = onDisk().substr(1536 * 512, one.size());
    EXPECT_TRUE(disk == one || disk == two);
}

TEST_F(GateOnKernel, RefusesADiskThatWasPutInTheJudgedOnesPlace) {
    const auto judged = findDisk(*devices_, "/dev/r" + disk_->name(), disk_->name());
    ASSERT_TRUE(judged) << judged.problem().sentence;
    ASSERT_TRUE(judged.value().device.diskSequence);
    ASSERT_TRUE(openDisk(*devices_, judged.value(), DiskUse::write));
    disk_->swapFor(folder_.file("other", before_));  // same name, number and size
    const auto disk = openDisk(*devices_, judged.value(), DiskUse::write);
    ASSERT_FALSE(disk);
    // On a busy machine the other one may have got another name.
    EXPECT_EQ(disk.problem().sentence, "another disk took the place of " + judged.value().device.name + " meanwhile.");
}

/// A register that has not heard of the change yet.
class LateDevices final : public BlockDevices {
  public:
    explicit LateDevices(BlockDevice known) : known_(std::move(known)) {}
    Outcome<BlockDevice> find(dev_t) const override { return known_; }
    Outcome<std::vector<dev_t>> diskAndPartitions(dev_t disk) const override { return std::vector<dev_t>{disk}; }
    std::vector<std::string> builtOnTopOf(dev_t) const override { return {}; }

  private:
    BlockDevice known_;
};

TEST_F(GateOnKernel, TrustsTheOpenedDisksOwnSequenceNumberMost) {
    const auto judged = findDisk(*devices_, "/dev/r" + disk_->name(), disk_->name());
    ASSERT_TRUE(judged);
    const LateDevices late(judged.value().device);
    ASSERT_TRUE(openDisk(late, judged.value(), DiskUse::write));
    disk_->swapFor(folder_.file("other", before_));
    EXPECT_FALSE(openDisk(late, judged.value(), DiskUse::write));
    EXPECT_FALSE(openDisk(late, judged.value(), DiskUse::read));
}

TEST_F(GateOnKernel, RefusesAWriteProtectedDisk) {
    disk_.reset();
    disk_.emplace(folder_.path() / "disk", LoopDisk::Shape{.isReadOnly = true});
    makeNode("/dev/" + disk_->name(), disk_->number());
    fs::remove("/dev/r" + disk_->name());
    fs::create_symlink(disk_->name(), "/dev/r" + disk_->name());
    const std::string answer = write(folder_.file("image", "x"));
    EXPECT_EQ(answer, "Refused: the disk " + disk_->name() + " is write-protected.");
    EXPECT_TRUE(onDisk() == before_);
}

TEST_F(GateOnKernel, ReadsBackThroughABufferedNodeFromTheDiskItself) {
    UniqueFd node(::open(("/dev/" + disk_->name()).c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_TRUE(node);
    NodeBytes bytes(std::move(node), before_.size(), 512);
    alignas(4096) static std::byte buffer[65536];
    ASSERT_TRUE(bytes.write(65536, buffer));
    ASSERT_TRUE(bytes.flush());
    const auto from = bytes.readBack(65536, buffer);
    ASSERT_TRUE(from);
    EXPECT_EQ(from.value(), DiskBytes::ReadFrom::disk);
}

}  // namespace
}  // namespace kestrav
