// The gate on real block devices, real mounts and real exclusive opening. Needs root.

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/swap.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "command/Answer.h"
#include "services/disk/AccessoryNode.h"
#include "services/disk/NodeBytes.h"
#include "services/disk/UdevBlockDevices.h"
#include "services/disk/openDisk.h"
#include "services/gate/Gate.h"
#include "services/gate/RequestLog.h"
#include "tests/TemporaryFolder.h"
#include "tests/base/RecordingLog.h"
#include "tests/services/LoopDisk.h"
#include "tests/services/SlowFolder.h"
#include "tests/services/asker/FakeAsker.h"
#include "tests/services/asker/FakeConsent.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr std::size_t diskBytes = std::size_t{4} << 20U;

class PrivateMounts : public testing::Environment {
  public:
    void SetUp() override {
        if (::geteuid() == 0) enterPrivateMounts();
    }
};
const auto* const privateMounts = testing::AddGlobalTestEnvironment(new PrivateMounts);

/// The machine's own devices, of which one loop disk passes for the accessory.
class LoopAsAccessory final : public BlockDevices {
  public:
    explicit LoopAsAccessory(const LoopDisk& disk) : disk_(disk) {}

    Outcome<BlockDevice> find(dev_t number) const override {
        auto device = devices_.find(number);
        if (device) device.value().accessory = device.value().diskName == disk_.name();
        return device;
    }
    Outcome<std::vector<dev_t>> diskAndPartitions(dev_t disk) const override {
        return devices_.diskAndPartitions(disk);
    }
    std::vector<std::string> builtOnTopOf(dev_t disk) const override { return devices_.builtOnTopOf(disk); }

  private:
    const LoopDisk& disk_;
    UdevBlockDevices devices_;
};

/// A process that does `begin` and then waits to be ended.
class Bystander {
  public:
    explicit Bystander(const std::function<bool()>& begin) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) std::abort();
        const UniqueFd ready(ends[0]);
        pid_ = ::fork();
        if (pid_ == 0) {
            const char done = begin() ? 'y' : 'n';
            if (::write(ends[1], &done, 1) != 1) ::_exit(1);
            while (true)
                ::pause();
        }
        ::close(ends[1]);
        char done = 'n';
        began_ = ::read(ready.get(), &done, 1) == 1 && done == 'y';
    }
    ~Bystander() {
        signalOne(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    Bystander(const Bystander&) = delete;
    Bystander& operator=(const Bystander&) = delete;

    bool began() const { return began_; }
    std::string shownName() const { return "kernel_test (" + std::to_string(pid_) + ")"; }

  private:
    pid_t pid_;
    bool began_ = false;
};

class GateOnKernel : public testing::Test {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "needs root: loop devices and mounts";
        fs::create_directories(place_);
        disk_.emplace(folder_.file("disk", before_));
        devices_.emplace(*disk_);
        makeNode("/dev/" + disk_->name(), disk_->number());
        makeNode("/dev/" + disk_->partitionName(), disk_->partitionNumber());
        fs::remove("/dev/r" + disk_->name());
        fs::remove("/dev/" + disk_->name() + "s1");
        fs::create_symlink(disk_->name(), "/dev/r" + disk_->name());
        fs::create_symlink(disk_->partitionName(), "/dev/" + disk_->name() + "s1");
    }
    void TearDown() override {
        while (::umount2(place_.c_str(), MNT_DETACH) == 0) {
        }
    }

    void makeFileSystem() {
        const std::string command = "mkfs.ext4 -q -F /dev/" + disk_->partitionName() + " >/dev/null 2>&1";
        ASSERT_EQ(std::system(command.c_str()), 0);
    }
    void mountAt(const fs::path& place) {
        fs::create_directories(place);
        const std::string node = "/dev/" + disk_->partitionName();
        ASSERT_EQ(::mount(node.c_str(), place.c_str(), "ext4", 0, nullptr), 0);
    }
    bool isMounted() const { return !MountinfoTable().placesOf(disk_->partitionNumber()).value().empty(); }

    std::string perform(std::string_view command, const std::vector<std::string>& arguments) {
        FakeAsker root(0);
        return Gate(consent_, *devices_, mounts_, requests_).perform(root, command, arguments).text;
    }
    std::string unmount() { return perform("umount", {"/dev/" + disk_->name() + "s1"}); }
    std::string write(const std::string& image, std::uint64_t block = 1536) {
        const std::string of = "of=/dev/r" + disk_->name();
        return perform("dd", {"if=" + image, of, "seek=" + std::to_string(block), "bs=512"});
    }
    std::string onDisk() const { return contentsOf(folder_.path() / "disk"); }

    const std::string before_ = patternOf(diskBytes, 7);
    TemporaryFolder folder_;
    const fs::path place_ = folder_.path() / "mounted here";
    std::optional<LoopDisk> disk_;
    std::optional<LoopAsAccessory> devices_;
    FakeConsent consent_;
    MountinfoTable mounts_;
    RecordingLog log_;
    RequestLog requests_{log_};
};

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

TEST_F(GateOnKernel, SaysSoThatAFrontEndKnowsThatItUnmounted) {
    makeFileSystem();
    mountAt(place_);
    const Answer answer = parseAnswer(unmount(), {AnswerTo::Kind::unmount, 0});
    EXPECT_EQ(answer.meaning, Answer::Meaning::unmounted);
    EXPECT_EQ(answer.disk, disk_->partitionName());
}

TEST_F(GateOnKernel, UnmountsAndSaysFromWhere) {
    makeFileSystem();
    mountAt(place_);
    mountAt(folder_.path() / "second");
    EXPECT_EQ(unmount(), "Unmounted " + disk_->partitionName() + " from " + (folder_.path() / "second").string() +
                             " and " + place_.string() + ".");
    EXPECT_FALSE(isMounted());
    EXPECT_EQ(unmount(), disk_->partitionName() + " was not mounted.");
}

TEST_F(GateOnKernel, UnmountsOnceMoreBeforeAWrite) {
    makeFileSystem();
    mountAt(place_);
    const std::string answer = write(folder_.file("image", "x"));
    EXPECT_THAT(answer, StartsWith("Wrote 1 bytes to " + disk_->name() + " at block 1536, verified, "));
    EXPECT_THAT(answer, testing::EndsWith(" It was mounted again and was unmounted from " + place_.string() + "."));
    EXPECT_FALSE(isMounted());
}

TEST_F(GateOnKernel, SaysWhatItUnmountedAlsoWhenTheDiskIsInUse) {
    makeFileSystem();
    mountAt(place_);
    const UniqueFd other(::open(("/dev/" + disk_->name()).c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(other.get(), LOCK_EX), 0);
    const std::string answer = write(folder_.file("image", "x"));
    EXPECT_THAT(answer, StartsWith("Refused: the disk " + disk_->name() + " is in use by "));
    EXPECT_THAT(answer, testing::EndsWith(" It was mounted again and was unmounted from " + place_.string() + "."));
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

TEST_F(GateOnKernel, NamesWhoStandsInTheMount) {
    makeFileSystem();
    mountAt(place_);
    const Bystander other([this] { return ::chdir(place_.c_str()) == 0; });
    ASSERT_TRUE(other.began());
    const std::string before = onDisk();
    const std::string expected = "still mounted at " + place_.string() + ": Device or resource busy. It is in use by " +
                                 other.shownName() + "; close that and try again.";
    EXPECT_EQ(unmount(), "Refused: " + disk_->partitionName() + " is " + expected);
    EXPECT_EQ(write(folder_.file("image", "x")), "Refused: " + disk_->name() + " is " + expected);
    EXPECT_TRUE(isMounted());
    EXPECT_TRUE(onDisk().substr(1536 * 512, 512) == before.substr(1536 * 512, 512));
}

TEST_F(GateOnKernel, NamesWhoHasAFileOfTheMountOpen) {
    makeFileSystem();
    mountAt(place_);
    const Bystander other([this] { return ::open((place_ / "file").c_str(), O_CREAT | O_RDWR, 0600) >= 0; });
    ASSERT_TRUE(other.began());
    EXPECT_THAT(unmount(), HasSubstr(other.shownName()));
}

TEST_F(GateOnKernel, NamesWhoHasAFileOfTheMountMapped) {
    makeFileSystem();
    mountAt(place_);
    const Bystander other([this] {
        const UniqueFd file(::open((place_ / "file").c_str(), O_CREAT | O_RDWR, 0600));
        return ::ftruncate(file.get(), 4096) == 0 &&
               ::mmap(nullptr, 4096, PROT_READ, MAP_SHARED, file.get(), 0) != MAP_FAILED;
    });
    ASSERT_TRUE(other.began());
    EXPECT_THAT(unmount(), HasSubstr(other.shownName()));
}

TEST_F(GateOnKernel, WaitsForAShortLookAtTheMount) {
    makeFileSystem();
    mountAt(place_);
    const Bystander other([this] {
        const pid_t looker = ::fork();
        if (looker != 0) return looker > 0;
        if (::chdir(place_.c_str()) != 0) ::_exit(1);
        ::usleep(300'000);
        ::_exit(0);
    });
    ::usleep(50'000);
    EXPECT_THAT(unmount(), StartsWith("Unmounted"));
}

TEST_F(GateOnKernel, RefusesWhenAnotherMountHidesTheDisks) {
    makeFileSystem();
    mountAt(place_);
    ASSERT_EQ(::mount("tmpfs", place_.c_str(), "tmpfs", 0, nullptr), 0);
    EXPECT_THAT(unmount(), HasSubstr("where something else hides it"));
    struct statfs on {};
    ASSERT_EQ(::statfs(place_.c_str(), &on), 0);
    EXPECT_EQ(on.f_type, 0x01021994);  // the tmpfs is still there
}

TEST_F(GateOnKernel, UnmountsTheDisksPlaceWhereverItsFolderIsPut) {
    makeFileSystem();
    const fs::path folders[] = {folder_.path() / "one", folder_.path() / "two"};
    for (const fs::path& folder : folders)
        fs::create_directories(folder / "place");
    mountAt(folders[0] / "place");
    ASSERT_EQ(::mount("kestrav-other", (folders[1] / "place").c_str(), "tmpfs", 0, nullptr), 0);
    const Bystander other([&folders] {
        if (::fork() == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            // Its owner exchanges the two folders as fast as it can.
            while (::renameat2(AT_FDCWD, folders[0].c_str(), AT_FDCWD, folders[1].c_str(), RENAME_EXCHANGE) == 0) {
            }
        }
        return true;
    });
    for (int i = 0; i < 300; ++i) {
        unmount();
        if (!isMounted()) mountAt(folders[0] / "place");
    }
    EXPECT_THAT(contentsOf("/proc/self/mountinfo"), HasSubstr(" - tmpfs kestrav-other "))
        << "the other file system was unmounted";
}

TEST_F(GateOnKernel, SaysWhenItCannotTellWhatIsMounted) {
    makeFileSystem();
    mountAt(place_);
    const std::string image = folder_.file("image", "x");
    ASSERT_EQ(::mount("tmpfs", "/proc", "tmpfs", 0, nullptr), 0);
    const std::string unmounting = unmount();
    const std::string writing = write(image);
    ASSERT_EQ(::umount2("/proc", 0), 0);
    EXPECT_EQ(unmounting, "Refused: the system does not tell what is mounted: No such file or directory.");
    EXPECT_EQ(writing, unmounting);
    EXPECT_TRUE(isMounted());
}

TEST_F(GateOnKernel, NamesWhoHasItMountedWhereTheServiceDoesNotSee) {
    makeFileSystem();
    mountAt(place_);
    const Bystander other([] { return ::unshare(CLONE_NEWNS) == 0; });
    ASSERT_TRUE(other.began());
    const std::string answer = write(folder_.file("image", "x"));
    EXPECT_THAT(answer, StartsWith("Refused: the disk " + disk_->name() + " is in use by " + other.shownName()));
}

/// The place of a file system whose mounts are passed on to those who follow, as on every Debian.
void makeShared(const fs::path& place) {
    fs::create_directories(place);
    ASSERT_EQ(::mount(place.c_str(), place.c_str(), nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(::mount(nullptr, place.c_str(), nullptr, MS_SHARED, nullptr), 0);
}

bool followInANamespaceOfItsOwn() {
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_SLAVE, nullptr) == 0;
}

TEST_F(GateOnKernel, BlamesNobodyWhoseMountsFollowOurs) {
    makeFileSystem();
    makeShared(folder_.path() / "shared");
    mountAt(folder_.path() / "shared" / "place");
    const Bystander udevd(followInANamespaceOfItsOwn);
    const Bystander shell([this] { return ::chdir((folder_.path() / "shared" / "place").c_str()) == 0; });
    ASSERT_TRUE(udevd.began() && shell.began());
    const std::string answer = unmount();
    EXPECT_THAT(answer, HasSubstr("It is in use by " + shell.shownName() + "; close that"));
    EXPECT_THAT(answer, Not(HasSubstr(udevd.shownName())));
    ::umount2((folder_.path() / "shared" / "place").c_str(), MNT_DETACH);
    ::umount2((folder_.path() / "shared").c_str(), MNT_DETACH);
}

TEST_F(GateOnKernel, BlamesNobodyBesideTheDisksUserWhoMerelySeesTheMount) {
    makeFileSystem();
    makeShared(folder_.path() / "shared");
    mountAt(folder_.path() / "shared" / "place");
    const Bystander udevd(followInANamespaceOfItsOwn);
    const Bystander user([this] {
        const std::string node = "/dev/" + disk_->name();
        return ::flock(::open(node.c_str(), O_RDONLY | O_CLOEXEC), LOCK_EX) == 0;
    });
    ASSERT_TRUE(udevd.began() && user.began());
    EXPECT_THAT(write(folder_.file("image", "x")),
                StartsWith("Refused: the disk " + disk_->name() + " is in use by " + user.shownName() + "; wait"));
    ::umount2((folder_.path() / "shared").c_str(), MNT_DETACH);
}

TEST_F(GateOnKernel, NamesOneProcessOfEachNamespaceThatHasItMounted) {
    makeFileSystem();
    mountAt(place_);
    const Bystander other([] {
        if (::unshare(CLONE_NEWNS) != 0) return false;
        const pid_t second = ::fork();
        if (second != 0) return second > 0;
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        while (true)
            ::pause();
    });
    ASSERT_TRUE(other.began());
    EXPECT_THAT(write(folder_.file("image", "x")),
                testing::MatchesRegex("Refused: the disk " + disk_->name() +
                                      " is in use by kernel_test \\([0-9]+\\); wait until.*"));
}

TEST_F(GateOnKernel, NamesTheMountsBelow) {
    makeFileSystem();
    mountAt(place_);
    fs::create_directories(place_ / "be low");
    ASSERT_EQ(::mount("none", (place_ / "be low").c_str(), "tmpfs", 0, nullptr), 0);
    const std::string answer = unmount();
    ASSERT_EQ(::umount2((place_ / "be low").c_str(), 0), 0);
    EXPECT_THAT(answer, testing::EndsWith(": Device or resource busy. Below it is mounted: " +
                                          (place_ / "be low").string() + "; unmount that first."));
}

TEST_F(GateOnKernel, NamesTheLoopDeviceOnAFileOfTheMount) {
    makeFileSystem();
    mountAt(place_);
    std::ofstream(place_ / "system.img") << "x";
    fs::resize_file(place_ / "system.img", std::size_t{2} << 20U);
    const LoopDisk other(place_ / "system.img");
    EXPECT_THAT(unmount(), testing::EndsWith(" It is in use by " + other.name() + " (" +
                                             (place_ / "system.img").string() + "); close that and try again."));
}

TEST_F(GateOnKernel, RefusesADiskThatALoopDeviceStandsUpon) {
    const LoopDisk other("/dev/" + disk_->partitionName());
    EXPECT_EQ(write(folder_.file("image", "x")), "Refused: the disk " + disk_->name() + " is in use by " +
                                                     other.name() + " (/dev/" + disk_->partitionName() +
                                                     "); wait until that is done and try again.");
    EXPECT_TRUE(onDisk() == before_);
}

TEST_F(GateOnKernel, NamesTheSwapSpace) {
    const std::string node = "/dev/" + disk_->partitionName();
    ASSERT_EQ(std::system(("mkswap " + node + " >/dev/null 2>&1").c_str()), 0);
    if (::swapon(node.c_str(), 0) != 0) {
        // Whatever else keeps it from being used is a failure: a skip would hide it.
        ASSERT_EQ(errno, EPERM) << std::strerror(errno);
        GTEST_SKIP() << "needs root of the machine itself: swap space";
    }
    const std::string answer = write(folder_.file("image", "x"));
    ASSERT_EQ(::swapoff(node.c_str()), 0);
    EXPECT_EQ(answer, "Refused: the disk " + disk_->name() + " is in use by the swap space " + node +
                          "; wait until that is done and try again.");
}

TEST_F(GateOnKernel, NamesWhoUsesTheDiskExclusively) {
    const Bystander other(
        [this] { return ::open(("/dev/" + disk_->name()).c_str(), O_RDWR | O_EXCL | O_CLOEXEC) >= 0; });
    ASSERT_TRUE(other.began());
    EXPECT_EQ(write(folder_.file("image", "x")), "Refused: the disk " + disk_->name() + " is in use by " +
                                                     other.shownName() + "; wait until that is done and try again.");
    EXPECT_TRUE(onDisk() == before_);
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
    disk_.emplace(folder_.path() / "disk", true);
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
    NodeBytes bytes(std::move(node), diskBytes, 512);
    alignas(4096) static std::byte buffer[65536];
    ASSERT_TRUE(bytes.write(65536, buffer));
    ASSERT_TRUE(bytes.flush());
    const auto from = bytes.readBack(65536, buffer);
    ASSERT_TRUE(from);
    EXPECT_EQ(from.value(), DiskBytes::ReadFrom::disk);
}

}  // namespace
}  // namespace kestrav
