#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
#include <optional>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "command/HelperInstallation.h"
#include "command/linux/PolkitAuthorization.h"
#include "tests/command/fakes/RecordingLog.h"
#include "tests/room/DismissingAgent.h"
#include "tests/room/PasswordAgent.h"
#include "tests/room/SystemDaemons.h"
#include "tests/room/SystemRoom.h"
#include "tests/room/runProgram.h"
#include "tests/services/SimulatedAccessory.h"
#include "tests/services/TemporaryFolder.h"
#include "tests/services/helper/HelperCaller.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

constexpr const char* kBless = "/usr/libexec/kestrav/kestrav-bless";
constexpr const char* kLog = "/run/helper.log";
constexpr const char* kImage = "/run/image.fds";
constexpr uid_t kAdmin = 4711;
constexpr uid_t kGuest = 4712;
constexpr std::size_t kDiskBytes = std::size_t{4} << 20U;
constexpr std::streamoff kFirmwareByte = 786432;

bool holdsWithin(std::chrono::milliseconds time, const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + time;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(10ms);
    }
    return true;
}

std::vector<pid_t> childrenOf(pid_t parent) {
    std::ifstream in("/proc/" + std::to_string(parent) + "/task/" + std::to_string(parent) + "/children");
    std::vector<pid_t> children;
    for (pid_t child = 0; in >> child;)
        children.push_back(child);
    return children;
}

const std::vector<std::string> kWrite{std::string("if=") + kImage, "of=/dev/rsdzz", "seek=1536", "bs=512"};

std::string callUnmount() {
    return callHelper("umount", {"/dev/sdzzs1"});
}

std::string callWrite() {
    return callHelper("dd", kWrite);
}

/// The real helper, installed by the real installer, on a real system bus with the real polkitd, beside a simulated
/// accessory; nobody but this test sees any of it.
class Helper : public testing::Test {
  protected:
    explicit Helper(std::string disk = patternOf(kDiskBytes, 7)) : before_(std::move(disk)) {}

    void SetUp() override {
        if (!SystemRoom::isPossible()) GTEST_SKIP() << "needs root";
        accessory_.emplace(before_);
        room_.emplace();
        addAccount("kestrav-admin", kAdmin, true);
        addAccount("kestrav-guest", kGuest, false);
        fs::create_directory("/usr/libexec/kestrav");
        fs::copy_file(KESTRAV_BLESS, kBless);
        fs::copy_file(KESTRAV_HELPER, "/usr/libexec/kestrav/kestrav-helper");
        SystemDaemons::addActions(kBless);
        ASSERT_EQ(runProgram({kBless, "install"}).exitStatus, 0);
        std::ofstream(kImage, std::ios::binary) << image_;
        fs::permissions(kImage, fs::perms(0644));
    }

    /// `decision`: what polkit is to say about running commands, such as "YES"; empty for the action's own defaults.
    void startDaemons(const std::string& decision = {}) {
        if (!decision.empty()) {
            SystemDaemons::addRule(
                "polkit.addRule(function(action) {"
                "  if (action.id == 'com.corvatel.kestrav.run') return polkit.Result." +
                decision + "; });");
        }
        daemons_.startBus();
        daemons_.startPolkitd();
    }

    /// Starts the helper in this test's view of devices; the bus would start it in the real one.
    void startHelper() {
        std::vector<std::string> environment;
        for (const char* name : {"LD_PRELOAD", "UMOCKDEV_DIR"}) {
            if (const char* value = std::getenv(name); value != nullptr) {
                environment.push_back(std::string(name) + "=" + value);
            }
        }
        helper_ =
            ChildProcess::start({"/bin/sh", "-c", std::string("exec ") + KESTRAV_HELPER + " 2>>" + kLog}, environment);
        ASSERT_TRUE(holdsWithin(10s, helperHasItsName));
    }

    static std::string log() {
        std::ostringstream text;
        text << std::ifstream(kLog).rdbuf();
        return text.str();
    }

    /// The one process that works on a request.
    pid_t jobProcess() const {
        std::vector<pid_t> children;
        holdsWithin(10s, [&] { return !(children = childrenOf(helper_.pid())).empty(); });
        return children.empty() ? -1 : children.front();
    }

    bool diskIsUntouched() const { return accessory_->diskBytes() == before_; }
    bool diskHasTheImage() const {
        std::string after = before_;
        return accessory_->diskBytes() == after.replace(kFirmwareByte, image_.size(), image_);
    }

    const std::string before_;
    const std::string image_ = patternOf(40000, 3);
    std::optional<SimulatedAccessory> accessory_;
    std::optional<SystemRoom> room_;
    SystemDaemons daemons_;
    ChildProcess helper_;
};

/// A disk so large that a write of most of it can be met in the middle.
class HelperOnALargeDisk : public Helper {
  protected:
    HelperOnALargeDisk() : Helper(std::string(std::size_t{160} << 20U, '\0')) {}

    static void makeLargeImage() {
        std::ofstream(kImage, std::ios::binary) << std::string(std::size_t{150} << 20U, 'x');
    }

    /// Waits until the first block is written.
    bool isWriting() const {
        return holdsWithin(20s, [this] {
            std::ifstream disk(accessory_->nodes() / "sdzz", std::ios::binary);
            disk.seekg(kFirmwareByte);
            return disk.get() == 'x';
        });
    }
};

TEST_F(Helper, ServesRootWithoutAskingAnybody) {
    startDaemons("NO");
    startHelper();
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.");
    EXPECT_THAT(callWrite(), MatchesRegex("Wrote 40000 bytes to sdzz at block 1536, verified, [0-9.]+ MB/s\\."));
    EXPECT_TRUE(diskHasTheImage());
    EXPECT_THAT(log(), HasSubstr("user 0: dd if=/run/image.fds of=/dev/rsdzz seek=1536 bs=512: Wrote 40000 bytes"));
}

TEST_F(Helper, AnswersWithBlocksInHexadecimal) {
    startDaemons();
    startHelper();
    const std::string answer = callHelper("dd", {"if=/dev/rsdzz", "skip=3", "count=1"});
    std::string expected;
    for (const char c : before_.substr(1536, 512)) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", static_cast<unsigned char>(c));
        expected += digits;
    }
    EXPECT_EQ(answer, expected);
}

TEST_F(Helper, ServesAUserWhomTheRulesLet) {
    startDaemons("YES");
    startHelper();
    UserProcess user(kGuest, callWrite);
    user.go();
    EXPECT_THAT(user.result(), StartsWith("Wrote 40000 bytes"));
    EXPECT_TRUE(diskHasTheImage());
}

TEST_F(Helper, OpensTheImageWithTheUsersRights) {
    startDaemons("YES");
    startHelper();
    fs::permissions(kImage, fs::perms(0600));
    UserProcess user(kGuest, callWrite);
    user.go();
    EXPECT_THAT(user.result(), AllOf(StartsWith("Refused: "), HasSubstr("Permission denied")));
    EXPECT_TRUE(diskIsUntouched());
}

struct Decision {
    const char* name;
    const char* rule;
    const char* answer;
};

class HelperRefuses : public Helper, public testing::WithParamInterface<Decision> {};

TEST_P(HelperRefuses, LeavingTheDiskUntouchedAndALineInTheLog) {
    startDaemons(GetParam().rule);
    startHelper();
    UserProcess user(kGuest, callWrite);
    user.go();
    EXPECT_EQ(user.result(), std::string("AccessDenied: ") + GetParam().answer);
    EXPECT_TRUE(diskIsUntouched());
    EXPECT_THAT(log(), HasSubstr("user 4712: dd if=/run/image.fds of=/dev/rsdzz seek=1536 bs=512: " +
                                 std::string(GetParam().answer)));
}

INSTANTIATE_TEST_SUITE_P(
    WithoutConsent, HelperRefuses,
    testing::Values(Decision{"no", "NO", "Refused: an administrator did not agree."},
                    Decision{"challenge", "AUTH_ADMIN",
                             "Refused: an administrator has to agree, and there is no way to ask for a password here."},
                    Decision{
                        "defaults", "",
                        "Refused: an administrator has to agree, and there is no way to ask for a password here."}),
    [](const auto& row) { return row.param.name; });

TEST_F(Helper, AsksForAnAdministratorsPassword) {
    startDaemons();
    startHelper();
    UserProcess user(kGuest, callWrite);
    PasswordAgent agent(user.pid(), kGuest);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    EXPECT_THAT(agent.shown(), AllOf(HasSubstr("Authentication is required to unmount, read or write the disk of your "
                                               "Kestrav accessory"),
                                     HasSubstr("kestrav-admin")));
    EXPECT_TRUE(diskIsUntouched()) << "written before anybody agreed";
    agent.type("secret\n");
    EXPECT_THAT(user.result(), StartsWith("Wrote 40000 bytes"));
    EXPECT_TRUE(diskHasTheImage());
}

TEST_F(Helper, AsksOnceForTheRequestsOfOneProcess) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, [] { return callUnmount() + " " + callWrite(); });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.type("secret\n");
    EXPECT_THAT(user.result(), StartsWith("sdzz1 was not mounted. Wrote 40000 bytes"));
    EXPECT_FALSE(agent.isAsked(1)) << "asked twice: " << agent.shown();
}

TEST_F(Helper, NeedsNoSecondPasswordAfterTheInstallation) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, [] {
        PolkitAuthorization authorization(kBless);
        RecordingLog log;
        std::optional<AuthorizationRef> authRef;
        HelperInstallation(authorization, log).blessHelper(authRef);
        return callWrite();
    });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.type("secret\n");
    EXPECT_THAT(user.result(), StartsWith("Wrote 40000 bytes"));
    EXPECT_FALSE(agent.isAsked(1)) << "asked twice: " << agent.shown();
}

TEST_F(Helper, RefusesAfterAWrongPassword) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, callWrite);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.type("wrong\n");
    EXPECT_EQ(user.result(), "AccessDenied: Refused: an administrator did not agree.");
    EXPECT_TRUE(diskIsUntouched());
}

TEST_F(Helper, RefusesWhenThePromptIsDismissed) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, callWrite);
    const DismissingAgent agent(user.pid(), kAdmin);
    user.go();
    EXPECT_THAT(user.result(), StartsWith("AccessDenied: Refused: "));
    EXPECT_TRUE(diskIsUntouched());
}

TEST_F(Helper, DoesNotPromptForAProgramThatDoesNotWantThat) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, [] { return callHelper("dd", kWrite, false); });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    EXPECT_EQ(user.result(),
              "AccessDenied: Refused: an administrator has to agree, and there is no way to ask for a password here.");
    EXPECT_FALSE(agent.isAsked(1));
}

TEST_F(Helper, RefusesWhenPolkitIsKilledWhileItAsks) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, callWrite);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    daemons_.killPolkitd();
    EXPECT_THAT(user.result(),
                StartsWith("AccessDenied: Refused: the authorization service (polkit) could not decide"));
    EXPECT_TRUE(diskIsUntouched());
}

TEST_F(Helper, BeginsNothingForACallerThatIsGone) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, callWrite);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    user.kill();
    ASSERT_TRUE(holdsWithin(10s, [&] { return childrenOf(helper_.pid()).empty(); }));
    EXPECT_THAT(log(), HasSubstr("gone before the request was begun; nothing was done"));
    EXPECT_TRUE(diskIsUntouched());
}

TEST_F(HelperOnALargeDisk, EndsTheWriteThatItHasBegunForACallerThatIsGone) {
    startDaemons("YES");
    startHelper();
    makeLargeImage();
    UserProcess user(kGuest, callWrite);
    user.go();
    ASSERT_TRUE(isWriting());
    user.kill();
    ASSERT_FALSE(childrenOf(helper_.pid()).empty()) << "the write was over before the caller went";
    ASSERT_TRUE(holdsWithin(30s, [&] { return childrenOf(helper_.pid()).empty(); }));
    EXPECT_THAT(log(), HasSubstr(": Wrote 157286400 bytes"));
}

TEST_F(Helper, IsStartedByTheBusWhenItIsNeeded) {
    startDaemons();
    // Started like this it sees the real devices, where there is no accessory.
    EXPECT_THAT(callUnmount(), StartsWith("Refused: "));
    EXPECT_TRUE(helperHasItsName());
}

TEST_F(Helper, ComesBackAfterItWasKilledInMidRequest) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, callWrite);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    const pid_t job = jobProcess();
    helper_.end();
    EXPECT_THAT(user.result(), StartsWith("NoReply: "));
    EXPECT_TRUE(holdsWithin(10s, [&] { return ::kill(job, 0) != 0; })) << "the request's process outlived its service";
    EXPECT_TRUE(diskIsUntouched());
    EXPECT_THAT(callUnmount(), StartsWith("Refused: ")) << "the bus did not start another";
}

TEST_F(Helper, SaysWhenARequestsProcessWasKilled) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, callWrite);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    ::kill(jobProcess(), SIGKILL);
    EXPECT_EQ(user.result(),
              "Failed: Failed: the request's process ended before it was done. If it was a write, repeat it.");
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.") << "the helper itself did not survive";
}

TEST_F(Helper, EndsWithTheBus) {
    startDaemons();
    startHelper();
    daemons_.killBus();
    EXPECT_EQ(helper_.wait(), 1);
    daemons_.startBus();
    daemons_.startPolkitd();
    startHelper();
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.");
}

TEST_F(Helper, SaysThatThereIsNoBus) {
    const ProgramRun run = runProgram({KESTRAV_HELPER});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_THAT(run.err, HasSubstr("The helper can't serve on the system bus: "));
}

TEST_F(Helper, LetsNobodyElseTakeItsName) {
    startDaemons();
    UserProcess user(kGuest, takeHelpersName);
    user.go();
    EXPECT_THAT(user.result(), StartsWith("AccessDenied: "));
}

TEST_F(Helper, ServesFortyAtOnce) {
    startDaemons("YES");
    startHelper();
    std::list<UserProcess> users;
    for (int i = 0; i < 40; ++i)
        users.emplace_back(kGuest, callUnmount);
    for (UserProcess& user : users)
        user.go();
    for (UserProcess& user : users)
        EXPECT_EQ(user.result(), "sdzz1 was not mounted.");
    EXPECT_TRUE(holdsWithin(10s, [&] { return childrenOf(helper_.pid()).empty(); }));
}

TEST_F(Helper, KeepsRoomForOthersBesideOneUser) {
    startDaemons();
    startHelper();
    UserProcess user(kGuest, [] {
        std::vector<ChildProcess> callers;
        for (int i = 0; i < 60; ++i) {
            const pid_t child = ::fork();
            if (child == 0) ::_exit(callUnmount().starts_with("LimitsExceeded: Refused: the helper is busy") ? 7 : 8);
            callers.emplace_back(child);
        }
        int turnedAway = 0;
        std::this_thread::sleep_for(2s);
        for (ChildProcess& caller : callers) {
            if (!caller.runs()) turnedAway += caller.wait() == 7 ? 1 : 0;
        }
        return std::to_string(turnedAway);
    });
    // Stopped, polkitd answers nobody, so every question stays open.
    daemons_.stopPolkitd();
    user.go();
    ASSERT_TRUE(holdsWithin(10s, [&] { return childrenOf(helper_.pid()).size() == 48; }));
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.") << "root found no room";
    EXPECT_EQ(user.result(), "12");
}

TEST_F(Helper, RefusesALongRequest) {
    startDaemons("YES");
    startHelper();
    UserProcess user(kGuest, [] { return callHelper("dd", {std::string(70'000, 'x')}).substr(0, 70); });
    user.go();
    EXPECT_EQ(user.result(), "LimitsExceeded: Refused: the request is longer than 64 KiB.");
}

TEST_F(Helper, RunsOnlyTheUpdatersCommands) {
    startDaemons("YES");
    startHelper();
    UserProcess user(kGuest, [] { return callHelper("/bin/sh", {"-c", "id >/run/pwned; echo %s%n"}); });
    user.go();
    EXPECT_THAT(user.result(), StartsWith("Refused: "));
    EXPECT_FALSE(fs::exists("/run/pwned"));
}

TEST_F(Helper, AsksNobodyAboutWhatItWouldRefuseAnyway) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, [] { return callHelper("rm", {"-rf", "/"}); });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    EXPECT_EQ(user.result(), "Refused: \"rm\" is not a command of this service.");
    EXPECT_FALSE(agent.isAsked(1));
}

TEST_F(HelperOnALargeDisk, WaitsForAJobOfAMinute) {
    startDaemons();
    startHelper();
    makeLargeImage();
    UserProcess user(0, callWrite);
    user.go();
    const pid_t job = jobProcess();
    ASSERT_TRUE(isWriting());
    ::kill(job, SIGSTOP);
    // The idle minute passes meanwhile as well.
    std::this_thread::sleep_for(63s);
    EXPECT_TRUE(helper_.runs());
    ::kill(job, SIGCONT);
    EXPECT_THAT(user.result(), StartsWith("Wrote 157286400 bytes"));
}

TEST_F(Helper, EndsItselfAfterAnIdleMinute) {
    startDaemons();
    startHelper();
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.");
    std::this_thread::sleep_for(55s);
    EXPECT_TRUE(helper_.runs());
    EXPECT_TRUE(holdsWithin(10s, [&] { return !helper_.runs(); }));
    EXPECT_EQ(helper_.wait(), 0);
    EXPECT_THAT(callUnmount(), StartsWith("Refused: ")) << "the bus did not start another";
}

TEST_F(Helper, EndsOnSigtermAtOnceWhenIdle) {
    startDaemons();
    startHelper();
    ::kill(helper_.pid(), SIGTERM);
    EXPECT_EQ(helper_.wait(), 0);
}

TEST_F(HelperOnALargeDisk, EndsOnSigtermAfterTheWorkThatRuns) {
    startDaemons();
    startHelper();
    makeLargeImage();
    UserProcess user(0, callWrite);
    user.go();
    const pid_t job = jobProcess();
    ASSERT_TRUE(isWriting());
    ::kill(job, SIGSTOP);
    ::kill(helper_.pid(), SIGTERM);
    std::this_thread::sleep_for(300ms);
    EXPECT_TRUE(helper_.runs());
    EXPECT_EQ(callUnmount(), "Failed: Refused: the helper is being stopped; try again in a moment.");
    ::kill(job, SIGCONT);
    EXPECT_THAT(user.result(), StartsWith("Wrote 157286400 bytes"));
    EXPECT_EQ(helper_.wait(), 0);
}

TEST_F(Helper, DoesNotLetAPromptHoldUpItsEnd) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, callWrite);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    ::kill(helper_.pid(), SIGTERM);
    EXPECT_EQ(helper_.wait(), 0);
    EXPECT_EQ(user.result(), "Failed: Refused: the helper is being stopped; try again in a moment.");
    EXPECT_TRUE(diskIsUntouched());
}

TEST_F(Helper, IsReplacedByAnInstallationOfAnotherProgram) {
    startDaemons();
    startHelper();
    ASSERT_EQ(runProgram({kBless, "install"}).out, "The helper is installed already.\n");
    std::this_thread::sleep_for(300ms);
    EXPECT_TRUE(helper_.runs()) << "ended although nothing changed";
    std::ofstream("/usr/libexec/kestrav/kestrav-helper", std::ios::app) << "another";
    ASSERT_EQ(runProgram({kBless, "install"}).out, "The helper is installed.\n");
    EXPECT_TRUE(holdsWithin(10s, [&] { return !helper_.runs(); }));
    EXPECT_THAT(callUnmount(), StartsWith("Refused: ")) << "the bus did not start the new one";
}

TEST_F(Helper, IsGoneAfterItsUninstallation) {
    startDaemons();
    startHelper();
    ASSERT_EQ(runProgram({kBless, "uninstall"}).exitStatus, 0);
    EXPECT_TRUE(holdsWithin(10s, [&] { return !helper_.runs(); }));
    EXPECT_THAT(callUnmount(), StartsWith("ServiceUnknown: "));
}

TEST(HelperProgram, KnowsHelpAndVersionAndNothingElse) {
    EXPECT_EQ(runProgram({KESTRAV_HELPER, "--help"}).exitStatus, 0);
    EXPECT_THAT(runProgram({KESTRAV_HELPER, "--version"}).out, StartsWith("kestrav-helper "));
    EXPECT_EQ(runProgram({KESTRAV_HELPER, "--bus=session"}).exitStatus, 2);
    EXPECT_EQ(runProgram({KESTRAV_HELPER, "--help", "--help"}).exitStatus, 2);
}

}  // namespace
}  // namespace kestrav
