#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tests/places.h"
#include "tests/services/helper/InstallerInARoom.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

struct InstalledFile {
    const char* path;
    mode_t mode;
    const char* saying;
};

class BlessInstalls : public Bless, public testing::WithParamInterface<InstalledFile> {};

TEST_P(BlessInstalls, AFileOfRootThatNobodyElseCanChange) {
    const auto& [path, mode, saying] = GetParam();
    const ProgramRun run = bless("install");
    ASSERT_EQ(run.exitStatus, 0) << run.err;
    struct stat status {};
    ASSERT_EQ(::lstat(path, &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(status.st_mode & 07777, mode);
    EXPECT_EQ(status.st_uid, 0U);
    EXPECT_EQ(status.st_gid, 0U);
    EXPECT_THAT(contents(path), HasSubstr(saying));
}

INSTANTIATE_TEST_SUITE_P(
    Files, BlessInstalls,
    testing::Values(InstalledFile{kProgram, 0755, "the helper's program"},
                    InstalledFile{kPolicy, 0644, "<allow own=\"com.corvatel.KestravHelper\"/>"},
                    InstalledFile{kUnit, 0644, "Type=dbus\nBusName=com.corvatel.KestravHelper\n"},
                    InstalledFile{kRules, 0644, "ATTRS{idVendor}==\"10d6\", ATTRS{idProduct}==\"fd01\""},
                    InstalledFile{kActivation, 0644, "SystemdService=com.corvatel.KestravHelper.service"}));

TEST_F(Bless, SaysInOneLineWhatItDid) {
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.out, "The helper is installed.\n");
    EXPECT_EQ(run.err, "");
}

TEST_F(Bless, LeavesNothingTemporaryBehind) {
    ASSERT_EQ(bless("install").exitStatus, 0);
    EXPECT_THAT(leftOver(), IsEmpty());
}

TEST_F(Bless, ChangesNothingTheSecondTime) {
    ASSERT_EQ(bless("install").exitStatus, 0);
    std::map<std::string, std::string> before;
    for (const char* path : {kProgram, kPolicy, kUnit, kRules, kActivation})
        before[path] = identity(path);
    const ProgramRun again = bless("install");
    EXPECT_EQ(again.exitStatus, 0);
    EXPECT_EQ(again.out, "The helper is installed already.\n");
    for (const auto& [path, was] : before)
        EXPECT_EQ(identity(path), was) << path;
}

TEST_F(Bless, ExchangesAnotherProgram) {
    ASSERT_EQ(bless("install").exitStatus, 0);
    const std::string unit = identity(kUnit);
    write(kSource, "a newer program");
    EXPECT_EQ(bless("install").out, "The helper is installed.\n");
    EXPECT_EQ(contents(kProgram), "a newer program");
    EXPECT_EQ(identity(kUnit), unit) << "what was right already was written again";
}

struct Damage {
    const char* what;
    void (*done)();
};

class BlessRepairs : public Bless, public testing::WithParamInterface<Damage> {};

TEST_P(BlessRepairs, WhatWasDamaged) {
    ASSERT_EQ(bless("install").exitStatus, 0);
    const std::string right = contents(kUnit);
    GetParam().done();
    ASSERT_EQ(bless("install").out, "The helper is installed.\n");
    struct stat status {};
    ASSERT_EQ(::lstat(kUnit, &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(status.st_mode & 07777, 0644U);
    EXPECT_EQ(status.st_uid, 0U);
    EXPECT_EQ(status.st_nlink, 1U);
    EXPECT_EQ(contents(kUnit), right);
}

INSTANTIATE_TEST_SUITE_P(Ways, BlessRepairs,
                         testing::Values(Damage{"removed", [] { fs::remove(kUnit); }},
                                         Damage{"changed", [] { write(kUnit, "[Service]\n"); }},
                                         Damage{"opened", [] { fs::permissions(kUnit, fs::perms(0666)); }},
                                         Damage{"given away", [] { ASSERT_EQ(::chown(kUnit, 1234, 0), 0); }},
                                         Damage{"named twice",
                                                [] { fs::create_hard_link(kUnit, "/etc/systemd/system/second-name"); }},
                                         Damage{"a link",
                                                [] {
                                                    fs::rename(kUnit, "/etc/unit-elsewhere");
                                                    fs::create_symlink("/etc/unit-elsewhere", kUnit);
                                                }},
                                         Damage{"killed before the end",
                                                [] {
                                                    write(kUnfinished, "");
                                                    ::chmod(kUnfinished, 0600);
                                                }}),
                         [](const auto& row) {
                             std::string name = row.param.what;
                             std::ranges::replace(name, ' ', '_');
                             return name;
                         });

TEST_F(Bless, ReplacesALinkAndNotWhatItPointsTo) {
    write("/etc/precious", "precious");
    fs::create_directories("/etc/systemd/system");
    fs::create_symlink("/etc/precious", kUnit);
    ASSERT_EQ(bless("install").exitStatus, 0);
    EXPECT_EQ(contents("/etc/precious"), "precious");
}

TEST_F(Bless, UninstallsEverything) {
    ASSERT_EQ(bless("install").exitStatus, 0);
    ASSERT_EQ(bless("register-right").exitStatus, 0);
    EXPECT_EQ(bless("uninstall").out, "The helper is uninstalled.\n");
    for (const char* path : {kProgram, kPolicy, kUnit, kRules, kActivation, kRight})
        EXPECT_FALSE(fs::exists(path)) << path;
    EXPECT_THAT(leftOver(), IsEmpty());
    EXPECT_EQ(bless("uninstall").out, "The helper is not installed.\n");
    EXPECT_EQ(bless("uninstall").exitStatus, 0);
}

TEST_F(Bless, RegistersTheRightForAdministratorsAlone) {
    EXPECT_EQ(bless("register-right").out, "The right is registered.\n");
    const std::string text = contents(kRight);
    EXPECT_THAT(text, HasSubstr("<action id=\"com.corvitel.KestravHelper\">"));
    EXPECT_THAT(text, HasSubstr("<message>Authorize disk access</message>"));
    for (const char* who : {"any", "inactive", "active"}) {
        EXPECT_THAT(text, HasSubstr(std::string("<allow_") + who + ">auth_admin</allow_" + who + ">"));
    }
    EXPECT_EQ(modeOf(kRight), 0644U);
    EXPECT_EQ(bless("register-right").out, "The right is registered already.\n");
}

class BlessRefuses : public Bless, public testing::WithParamInterface<std::vector<std::string>> {};

TEST_P(BlessRefuses, AnythingElse) {
    std::vector<std::string> words{kBless};
    words.insert(words.end(), GetParam().begin(), GetParam().end());
    const ProgramRun run = runProgram(words);
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_THAT(run.err, StartsWith("Usage: kestrav-bless install | uninstall | register-right\n"));
    EXPECT_FALSE(fs::exists(kProgram));
}

INSTANTIATE_TEST_SUITE_P(
    Arguments, BlessRefuses,
    testing::Values(std::vector<std::string>{}, std::vector<std::string>{""}, std::vector<std::string>{"Install"},
                    std::vector<std::string>{"install", "install"}, std::vector<std::string>{"install", "--root=/tmp"},
                    std::vector<std::string>{"--root=/tmp", "install"}, std::vector<std::string>{"/etc/passwd"}));

TEST_F(Bless, RefusesAnybodyButRoot) {
    const ProgramRun run = bless("install", {.uid = 65534, .environment = {}, .input = {}});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.err, "Only root can do that: run it through pkexec or sudo.\n");
}

TEST_F(Bless, NeverExitsLikePkexecDoes) {
    fs::remove(kSource);
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.err, "The file /usr/libexec/kestrav/kestrav-helper can't be opened: No such file or directory.\n");
}

TEST_F(Bless, TrustsNoEnvironment) {
    const ProgramRun run = bless("install", {.uid = 0,
                                             .environment = {"PATH=/tmp", "LD_LIBRARY_PATH=/tmp", "TMPDIR=/nonexistent",
                                                             "DBUS_SYSTEM_BUS_ADDRESS=unix:path=/nonexistent",
                                                             "HOME=/nonexistent", "LC_ALL=de_DE"},
                                             .input = {}});
    EXPECT_EQ(run.exitStatus, 0) << run.err;
    EXPECT_EQ(modeOf(kProgram), 0755U);
}

TEST_F(Bless, ForgetsTheEnvironmentThatItWasGiven) {
    const std::string reporter = places::ofBuilt("tests/services/helper/libenvironment_at_end.so");
    const ProgramRun run =
        bless("install",
              {.uid = 0,
               .environment = {"LD_PRELOAD=" + reporter, "HOME=/nonexistent", "ASAN_OPTIONS=verify_asan_link_order=0"},
               .input = {}});
    ASSERT_EQ(run.exitStatus, 0) << run.err;
    ASSERT_TRUE(fs::exists("/run/environment-at-end"));
    EXPECT_EQ(contents("/run/environment-at-end"), "");
}

TEST_F(Bless, GivesTheSameAccessUnderAnyUmask) {
    // The narrow one first: the folders are made but once.
    const mode_t before = ::umask(077);
    const ProgramRun run = bless("install");
    ::umask(0);
    write(kSource, "another");
    const ProgramRun second = bless("install");
    ::umask(before);
    EXPECT_EQ(run.exitStatus, 0);
    EXPECT_EQ(second.exitStatus, 0);
    EXPECT_EQ(modeOf(kProgram), 0755U);
    EXPECT_EQ(modeOf("/usr/local/libexec"), 0755U);
    EXPECT_EQ(modeOf("/usr/local/share/dbus-1/system-services"), 0755U);
}

TEST_F(Bless, ExchangesNothingWhenThereIsNoRoomForAll) {
    ASSERT_EQ(bless("install").exitStatus, 0);
    write(kSource, std::string(200'000, 'x'));
    fs::remove(kActivation);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{100'000, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    const ProgramRun run = bless("install");
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.err, std::string("The file ") + kProgram + " can't be written: File too large.\n");
    EXPECT_EQ(contents(kProgram), "the helper's program");
    EXPECT_FALSE(fs::exists(kActivation));
    EXPECT_THAT(leftOver(), IsEmpty());
}

TEST_F(Bless, InstallsOnceWhenAskedByTenAtOnce) {
    std::vector<pid_t> children;
    for (int i = 0; i < 10; ++i) {
        const pid_t child = ::fork();
        if (child == 0) ::_exit(bless("install").exitStatus);
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(contents(kProgram), "the helper's program");
    EXPECT_THAT(leftOver(), IsEmpty());
}

}  // namespace
}  // namespace kestrav
