// Unmounting, and who holds a disk, on a real kernel. Needs root.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/swap.h>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "command/Answer.h"
#include "tests/TemporaryFolder.h"
#include "tests/eventually.h"
#include "tests/services/Bystander.h"
#include "tests/services/LoopDisk.h"
#include "tests/services/gate/GateOnKernel.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class PrivateMounts : public testing::Environment {
  public:
    void SetUp() override {
        if (::geteuid() == 0) enterPrivateMounts();
    }
};
const auto* const privateMounts = testing::AddGlobalTestEnvironment(new PrivateMounts);

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

TEST_F(GateOnKernel, SaysWhatItUnmountedAlsoWhenTheDiskIsInUse) {
    makeFileSystem();
    mountAt(place_);
    const UniqueFd other(::open(("/dev/" + disk_->name()).c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(other.get(), LOCK_EX), 0);
    const std::string answer = write(folder_.file("image", "x"));
    EXPECT_THAT(answer, StartsWith("Refused: the disk " + disk_->name() + " is in use by "));
    EXPECT_THAT(answer, testing::EndsWith(" It was mounted again and was unmounted from " + place_.string() + "."));
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
    EXPECT_THAT(write(folder_.file("image", "x")), StartsWith("Wrote 1 bytes"));
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
    {
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
    }
    EXPECT_THAT(contentsOf("/proc/self/mountinfo"), HasSubstr(" - tmpfs kestrav-other "))
        << "the other file system was unmounted";
    // The last exchange may come while they are taken away.
    EXPECT_TRUE(eventually([&] {
        for (const fs::path& folder : folders)
            ::umount2((folder / "place").c_str(), MNT_DETACH);
        return contentsOf("/proc/self/mountinfo").find(folder_.path().string()) == std::string::npos;
    }));
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

}  // namespace
}  // namespace kestrav
