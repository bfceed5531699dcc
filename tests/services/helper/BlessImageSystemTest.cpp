#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/openSystemBus.h"
#include "tests/eventually.h"
#include "tests/places.h"
#include "tests/sandbox/ChildProcess.h"
#include "tests/sandbox/SystemDaemons.h"
#include "tests/services/helper/InstallerInARoom.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kRightInEtc = "/etc/polkit-1/actions/com.corvitel.KestravHelper.policy";
constexpr const char* kElsewhere = "/var/lib/usrlocal";

/// As systems have it whose /usr is an image: /usr/local leads out of it.
class BlessOnAnImage : public Bless {
  protected:
    void SetUp() override {
        Bless::SetUp();
        if (IsSkipped()) return;
        for (const char* folder : {"/run/image", "/run/image/upper", "/run/image/work"})
            fs::create_directory(folder);
        ASSERT_EQ(
            ::mount("image", "/usr", "overlay", 0, "lowerdir=/usr,upperdir=/run/image/upper,workdir=/run/image/work"),
            0);
        fs::remove_all("/usr/local");
        fs::create_directories(kElsewhere);
        fs::create_directory_symlink("../var/lib/usrlocal", "/usr/local");
        fs::create_directories(kOwn);
        fs::copy_file(places::ofProgram("kestrav-bless"), kBless, fs::copy_options::overwrite_existing);
        write(kSource, "the helper's program");
    }
};

TEST_F(BlessOnAnImage, FollowsTheLinkOfRootToUsrLocal) {
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.out, "The helper is installed.\n") << run.err;
    EXPECT_EQ(contents("/var/lib/usrlocal/libexec/com.corvatel.KestravHelper"), "the helper's program");
    EXPECT_TRUE(fs::exists(kActivation));
    EXPECT_EQ(bless("install").out, "The helper is installed already.\n");
    EXPECT_EQ(bless("uninstall").out, "The helper is uninstalled.\n");
    EXPECT_FALSE(fs::exists(kProgram));
}

TEST_F(BlessOnAnImage, MakesWhatTheLinkLeadsTo) {
    fs::remove(kElsewhere);
    EXPECT_EQ(bless("install").exitStatus, 0);
    EXPECT_EQ(modeOf(kElsewhere), 0755U);
}

TEST_F(BlessOnAnImage, DistrustsWhereTheLinkLeadsToWhenOthersCanWriteThere) {
    ASSERT_EQ(::chmod(kElsewhere, 0777), 0);
    const ProgramRun run = bless("install");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_THAT(run.err, StartsWith("Refused: others than root can write to the folder /var/lib/usrlocal. "));
    EXPECT_FALSE(fs::exists(kUnit));
}

TEST_F(BlessOnAnImage, DistrustsAnothersLink) {
    ASSERT_EQ(::lchown("/usr/local", 1234, 1234), 0);
    EXPECT_EQ(bless("install").err, "Refused: /usr/local is not a folder but a link or a file.\n");
}

TEST_F(BlessOnAnImage, DistrustsAFolderOfLinksThatOthersCanWriteTo) {
    ASSERT_EQ(::chmod("/usr", 0777), 0);
    EXPECT_THAT(bless("install").err, StartsWith("Refused: others than root can write to the folder /usr. "));
}

TEST_F(BlessOnAnImage, DistrustsALinkBehindTheLink) {
    fs::remove(kElsewhere);
    fs::create_directory("/var/lib/further");
    fs::create_directory_symlink("/var/lib/further", kElsewhere);
    EXPECT_EQ(bless("install").err, "Refused: /var/lib/usrlocal is not a folder but a link or a file.\n");
}

void makeReadOnly(const char* folder) {
    ASSERT_EQ(::mount(folder, folder, nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(::mount(nullptr, folder, nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr), 0);
}

TEST_F(Bless, SaysWhatToDoWhereUsrLocalCannotBeWritten) {
    makeReadOnly("/usr/local");
    EXPECT_EQ(bless("install").err,
              "The folder /usr/local/libexec is read-only, so nothing can be installed there. Make it writable; where "
              "/usr is an image, /usr/local can be a link to a folder of root's that is writable.\n");
}

TEST_F(Bless, SaysTheCommandThatMendsAnOpenFolder) {
    ASSERT_EQ(::chown("/usr/local", 0, 50), 0);
    ASSERT_EQ(::chmod("/usr/local", 02775), 0);
    const std::string said = bless("install").err;
    EXPECT_EQ(said,
              "Refused: others than root can write to the folder /usr/local. Run 'chown root:root /usr/local && chmod "
              "go-w /usr/local' first; until then nothing in it is safe.\n");
    const std::size_t begin = said.find('\'') + 1;
    EXPECT_EQ(runProgram({"/bin/sh", "-c", said.substr(begin, said.rfind('\'') - begin)},
                         {.uid = 0, .environment = {"PATH=/usr/bin:/bin"}, .input = {}})
                  .exitStatus,
              0);
    EXPECT_EQ(bless("install").out, "The helper is installed.\n");
}

constexpr const char* kStandInIsThere = "/run/stand-in-for-polkit";

int tellVersion(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* version, sd_bus_error*) {
    return sd_bus_message_append(reply, "s", static_cast<const char*>(version));
}

/// Stands in for a polkit of that version on the bus, which is older or newer than this computer's. Ends with its
/// process.
int standInForPolkit(std::string version) {
    becomeUser(::getpwnam("polkitd")->pw_uid);
    const auto bus = openSystemBus();
    if (!bus) return 1;
    sd_bus* raw = bus.value().get();
    constexpr sd_bus_vtable kProperties[] = {
        SD_BUS_VTABLE_START(0), SD_BUS_PROPERTY("BackendVersion", "s", tellVersion, 0, 0), SD_BUS_VTABLE_END};
    if (sd_bus_add_object_vtable(raw, nullptr, "/org/freedesktop/PolicyKit1/Authority",
                                 "org.freedesktop.PolicyKit1.Authority", kProperties, version.data()) < 0) {
        return 1;
    }
    if (sd_bus_request_name(raw, "org.freedesktop.PolicyKit1", 0) < 0) return 1;
    write(std::string(kStandInIsThere) + "/yes", "");
    while (sd_bus_process(raw, nullptr) >= 0 && sd_bus_wait(raw, UINT64_MAX) >= 0) {
    }
    return 1;
}

ChildProcess startedPolkit(const char* version) {
    fs::create_directory(fs::path(kStandInIsThere));
    EXPECT_EQ(::chmod(kStandInIsThere, 0777), 0);
    ChildProcess polkit(::fork());
    if (polkit.pid() == 0) ::_exit(standInForPolkit(version));
    EXPECT_TRUE(eventually([] { return !fs::is_empty(kStandInIsThere); }));
    return polkit;
}

TEST_F(Bless, RegistersTheRightInEtcWherePolkitLooksThere) {
    makeReadOnly("/usr/share/polkit-1");
    SystemDaemons daemons;
    daemons.startBus();
    const ChildProcess polkit = startedPolkit("124");
    EXPECT_EQ(bless("register-right").out, "The right is registered.\n");
    EXPECT_THAT(contents(kRightInEtc), HasSubstr("<action id=\"com.corvitel.KestravHelper\">"));
    EXPECT_EQ(modeOf(kRightInEtc), 0644U);
    EXPECT_EQ(bless("register-right").out, "The right is registered already.\n");
    EXPECT_EQ(bless("uninstall").out, "The helper is uninstalled.\n");
    EXPECT_FALSE(fs::exists(kRightInEtc));
}

TEST_F(Bless, SaysThatAnOldPolkitLooksNowhereElse) {
    makeReadOnly("/usr/share/polkit-1");
    SystemDaemons daemons;
    daemons.startBus();
    const ChildProcess polkit = startedPolkit("123");
    const ProgramRun run = bless("register-right");
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(
        run.err,
        "The folder /usr/share/polkit-1/actions is read-only, and polkit (version 123) looks nowhere else. Make the "
        "folder writable, or use polkit 124 or later.\n");
    EXPECT_FALSE(fs::exists(kRightInEtc));
}

TEST_F(Bless, SaysThatNoPolkitAnswersWhereItWouldHaveToKnow) {
    makeReadOnly("/usr/share/polkit-1");
    EXPECT_EQ(
        bless("register-right").err,
        "The folder /usr/share/polkit-1/actions is read-only, and polkit does not answer. Make the folder writable, "
        "or use polkit 124 or later.\n");
}

}  // namespace
}  // namespace kestrav
