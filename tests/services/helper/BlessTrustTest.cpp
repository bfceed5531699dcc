#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/services/helper/InstallerInARoom.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;
using testing::StartsWith;

struct Opened {
    const char* folder;
    uid_t owner;
    mode_t mode;
};

class BlessDistrusts : public Bless, public testing::WithParamInterface<Opened> {};

TEST_P(BlessDistrusts, AFolderThatOthersCanWriteTo) {
    const auto& [folder, owner, mode] = GetParam();
    fs::create_directories(folder);
    ASSERT_EQ(::chown(folder, owner, 0), 0);
    ASSERT_EQ(::chmod(folder, mode), 0);
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_THAT(run.err, StartsWith(std::string("Refused: others than root can write to the folder ") + folder));
    for (const char* path : {kProgram, kPolicy, kUnit, kRules, kActivation})
        EXPECT_FALSE(fs::exists(path)) << path;
    EXPECT_THAT(leftOver(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Folders, BlessDistrusts,
                         testing::Values(Opened{"/usr/local/libexec", 0, 0777}, Opened{"/usr/local/libexec", 0, 0775},
                                         Opened{"/usr/local/libexec", 1234, 0755}, Opened{"/usr/local", 0, 01777},
                                         Opened{"/etc/systemd/system", 0, 0757}, Opened{"/etc/dbus-1", 0, 0770},
                                         Opened{"/usr/local/share/dbus-1/system-services", 99, 0755},
                                         Opened{"/etc/udev", 0, 0733}));

TEST_F(Bless, DistrustsALinkOnTheWay) {
    fs::create_directory("/etc/elsewhere");
    fs::remove("/usr/local/libexec");  // a fresh Debian 13 has it, empty
    fs::create_directory_symlink("/etc/elsewhere", "/usr/local/libexec");
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.err, "Refused: /usr/local/libexec is not a folder but a link or a file.\n");
    EXPECT_TRUE(fs::is_empty("/etc/elsewhere"));
}

TEST_F(Bless, DistrustsAProgramThatOthersCanChange) {
    ASSERT_EQ(::chmod(kSource, 0775), 0);
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.err, "Refused: others than root can change /usr/libexec/kestrav/kestrav-helper.\n");
    EXPECT_FALSE(fs::exists(kProgram));
}

TEST_F(Bless, DistrustsALinkInTheProgramsPlace) {
    write("/etc/another", "another program");
    fs::remove(kSource);
    fs::create_symlink("/etc/another", kSource);
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.err, std::string("The file ") + kSource + " can't be opened: Too many levels of symbolic links.\n");
    EXPECT_FALSE(fs::exists(kProgram));
}

TEST_F(Bless, DistrustsItsOwnFolderWhenOthersCanWriteToIt) {
    ASSERT_EQ(::chmod(kOwn, 0777), 0);
    EXPECT_THAT(bless("install").err,
                StartsWith("Refused: others than root can write to the folder /usr/libexec/kestrav"));
    EXPECT_FALSE(fs::exists(kProgram));
}

TEST_F(Bless, DoesNotWaitForAPipeInTheProgramsPlace) {
    fs::remove(kSource);
    ASSERT_EQ(::mkfifo(kSource, 0644), 0);
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_THAT(run.err, StartsWith("Refused: "));
}

}  // namespace
}  // namespace kestrav
