#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/file.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "services/helper/bless/lockInstallation.h"
#include "tests/eventually.h"
#include "tests/sandbox/ChildProcess.h"
#include "tests/services/helper/InstallerInARoom.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr const char* kLock = "/run/kestrav-bless.lock";

UniqueFd locked(const char* path) {
    UniqueFd file(::open(path, O_RDONLY | O_CREAT | O_CLOEXEC, 0600));
    return ::flock(file.get(), LOCK_EX) == 0 ? std::move(file) : UniqueFd();
}

bool hasOpen(pid_t process, const fs::path& path) {
    std::error_code gone;
    const fs::directory_iterator open("/proc/" + std::to_string(process) + "/fd", gone);
    return std::ranges::any_of(open, [&](const fs::directory_entry& entry) {
        std::error_code closed;
        return fs::read_symlink(entry.path(), closed) == path;
    });
}

class BlessWaits : public Bless, public testing::WithParamInterface<const char*> {};

TEST_P(BlessWaits, ForAnotherOneThatRuns) {
    fs::create_directories("/usr/local/libexec");
    write(kUnfinished, "");
    UniqueFd other = locked(kLock);
    ASSERT_TRUE(other);
    ChildProcess second = ChildProcess::start({kBless, GetParam()});
    ASSERT_TRUE(eventually([&] { return hasOpen(second.pid(), kLock); }));
    EXPECT_TRUE(second.runs());
    EXPECT_FALSE(fs::exists(kUnit));
    EXPECT_FALSE(fs::exists(kRight));
    EXPECT_TRUE(fs::exists(kUnfinished));
    other.reset();
    EXPECT_EQ(second.wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(Operations, BlessWaits, testing::Values("install", "uninstall", "register-right"),
                         [](const auto& row) {
                             std::string name = row.param;
                             std::ranges::replace(name, '-', '_');
                             return name;
                         });

TEST_F(Bless, WaitsForNobodyWhereThereIsNothingToDo) {
    EXPECT_EQ(bless("install").exitStatus, 0);
    EXPECT_EQ(bless("register-right").exitStatus, 0);
    const UniqueFd other = locked(kLock);
    EXPECT_EQ(bless("install").out, "The helper is installed already.\n");
    EXPECT_EQ(bless("register-right").out, "The right is registered already.\n");
}

TEST_F(Bless, IsNotHeldUpByAnybodysLockOnAFolder) {
    fs::create_directories("/usr/local/libexec");
    const ChildProcess anybody(::fork());
    if (anybody.pid() == 0) {
        becomeUser(65534);
        const UniqueFd held = UniqueFd(::open("/usr/local/libexec", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        ::_exit(::flock(held.get(), LOCK_EX) == 0 && ::kill(::getpid(), SIGSTOP) == 0 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(anybody.pid(), &status, WUNTRACED), anybody.pid());
    ASSERT_TRUE(WIFSTOPPED(status)) << "has no lock";
    ChildProcess run = ChildProcess::start({kBless, "install"});
    EXPECT_TRUE(eventually([&] { return !run.runs(); })) << "waits for another user";
    EXPECT_TRUE(fs::exists(kUnit));
}

TEST_F(Bless, LocksAFileThatRootAloneCanOpen) {
    ASSERT_EQ(bless("install").exitStatus, 0);
    struct stat status {};
    ASSERT_EQ(::lstat(kLock, &status), 0);
    EXPECT_EQ(status.st_mode, S_IFREG | 0600U);
    EXPECT_EQ(status.st_uid, 0U);
}

struct ForeignLock {
    const char* name;
    void (*made)();
};

class BlessLock : public Bless, public testing::WithParamInterface<ForeignLock> {};

TEST_P(BlessLock, IsRefusedWhereOthersMayHoldIt) {
    GetParam().made();
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.err,
              "The file /run/kestrav-bless.lock is not the installer's own, so others may hold it. Remove it.\n");
    EXPECT_FALSE(fs::exists(kUnit));
    fs::remove(kLock);
    EXPECT_EQ(bless("install").exitStatus, 0);
}

INSTANTIATE_TEST_SUITE_P(Files, BlessLock,
                         testing::Values(ForeignLock{"Readable",
                                                     [] {
                                                         write(kLock, "");
                                                         ::chmod(kLock, 0644);
                                                     }},
                                         ForeignLock{"AnothersOwn",
                                                     [] {
                                                         write(kLock, "");
                                                         ::chmod(kLock, 0600);
                                                         ASSERT_EQ(::chown(kLock, 1234, 0), 0);
                                                     }},
                                         ForeignLock{"Link", [] { fs::create_symlink("/etc/passwd", kLock); }},
                                         ForeignLock{"Pipe", [] { ASSERT_EQ(::mkfifo(kLock, 0600), 0); }},
                                         ForeignLock{"Folder", [] { fs::create_directory(kLock); }}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Bless, IsToldWhenAnotherOneTakesTooLong) {
    UniqueFd other = locked(kLock);
    const auto late = lockInstallation(std::chrono::milliseconds(1));
    ASSERT_FALSE(late);
    EXPECT_EQ(late.problem().sentence,
              "Another installation has been running for minutes. Try again when it has ended.");
    other.reset();
    EXPECT_TRUE(lockInstallation(std::chrono::milliseconds(1)));
}

TEST_F(Bless, IsOneAtATime) {
    auto one = lockInstallation(std::chrono::milliseconds(1));
    ASSERT_TRUE(one);
    EXPECT_FALSE(lockInstallation(std::chrono::milliseconds(1)));
    one.value().reset();
    EXPECT_TRUE(lockInstallation(std::chrono::milliseconds(1)));
}

/// Ends the installer while it writes the helper's program, which is large. It may be too quick for that; then it has
/// installed everything, and is tried again.
int endedInMidWork(int signalNumber) {
    constexpr std::uintmax_t kLarge = 150 << 20;
    fs::resize_file(kSource, kLarge);
    const fs::path half = "/usr/local/libexec/.com.corvatel.KestravHelper.new";
    ChildProcess run = ChildProcess::start({kBless, "install"});
    while (run.runs() && !fs::exists(half)) {
    }
    signalOne(run.pid(), signalNumber);
    return run.wait();
}

TEST_F(Bless, LeavesNothingBehindWhenItIsToldToEnd) {
    int status = 0;
    for (int i = 0; i < 20 && status == 0; ++i) {
        ASSERT_EQ(bless("uninstall").exitStatus, 0);
        status = endedInMidWork(SIGTERM);
    }
    EXPECT_EQ(status, -SIGTERM);
    EXPECT_THAT(leftOver(), IsEmpty());
    EXPECT_FALSE(fs::exists(kProgram));
}

TEST_F(Bless, ClearsAwayWhatAKilledOneLeft) {
    int status = 0;
    for (int i = 0; i < 20 && status == 0; ++i) {
        ASSERT_EQ(bless("uninstall").exitStatus, 0);
        status = endedInMidWork(SIGKILL);
    }
    ASSERT_EQ(status, -SIGKILL);
    ASSERT_THAT(leftOver(), Not(IsEmpty()));
    EXPECT_EQ(bless("uninstall").out, "The helper is uninstalled.\n");
    EXPECT_THAT(leftOver(), IsEmpty());
}

class BlessOnAReadOnlyFolder : public Bless, public testing::WithParamInterface<const char*> {};

TEST_P(BlessOnAReadOnlyFolder, LeavesNothingBehind) {
    ASSERT_EQ(::mount(GetParam(), GetParam(), nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(::mount(nullptr, GetParam(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr), 0);
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_THAT(run.err, HasSubstr(GetParam()));
    EXPECT_THAT(run.err, Not(HasSubstr("..")));
    EXPECT_THAT(leftOver(), IsEmpty());
    EXPECT_FALSE(fs::exists(kProgram));
    EXPECT_EQ(bless("uninstall").out, "The helper is not installed.\n");
}

INSTANTIATE_TEST_SUITE_P(Folders, BlessOnAReadOnlyFolder, testing::Values("/etc", "/usr/local"),
                         [](const auto& row) { return std::string(row.param + 1, 3); });

}  // namespace
}  // namespace kestrav
