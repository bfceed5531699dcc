#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "command/HelperInstallation.h"
#include "command/SMJError.h"
#include "command/linux/PolkitAuthorization.h"
#include "tests/base/RecordingLog.h"
#include "tests/places.h"
#include "tests/sandbox/DismissingAgent.h"
#include "tests/sandbox/PasswordAgent.h"
#include "tests/sandbox/Sandbox.h"
#include "tests/sandbox/SystemDaemons.h"
#include "tests/sandbox/writeScript.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* kBless = "/usr/libexec/kestrav/kestrav-bless";
constexpr const char* kProgram = "/usr/local/libexec/com.corvatel.KestravHelper";
constexpr const char* kRight = "/usr/share/polkit-1/actions/com.corvitel.KestravHelper.policy";
constexpr uid_t kAdmin = 4711;
constexpr uid_t kGuest = 4712;

/// What a launch comes to: what was logged, what was raised, and whether the consent was kept.
std::string launch(Authorization& authorization) {
    RecordingLog log;
    std::optional<AuthorizationRef> authRef;
    std::string told;
    try {
        HelperInstallation(authorization, log).blessHelper(authRef);
    } catch (const SMJError& error) {
        told = "SMJError: " + std::string(error.what());
    } catch (const BlessingError& error) {
        told = "BlessingError: " + std::string(error.what());
    }
    for (const std::string& entry : log.entries())
        told += entry;
    return told + (authRef ? " [consent]" : " [no consent]");
}

std::string launchFromThisProcess() {
    PolkitAuthorization authorization(kBless);
    return launch(authorization);
}

std::string registerRight() {
    PolkitAuthorization authorization(kBless);
    RecordingLog log;
    std::optional<AuthorizationRef> authRef;
    const bool authorized = HelperInstallation(authorization, log).authorizeWithCmd("dd", authRef);
    return std::string(authorized ? "true " : "false ") + log.entries().at(0);
}

class PolkitConsent : public testing::Test {
  protected:
    void SetUp() override {
        if (!Sandbox::isPossible()) GTEST_SKIP() << "needs root";
        room_.emplace();
        fs::create_directory("/usr/libexec/kestrav");
        fs::copy_file(places::ofProgram("kestrav-bless"), kBless);
        std::ofstream("/usr/libexec/kestrav/kestrav-helper") << "the helper's program";
        addAccount("kestrav-admin", kAdmin, true);
        addAccount("kestrav-guest", kGuest, false);
        SystemDaemons::addActions(kBless);
    }

    void startDaemons() { daemons_.start(); }

    static bool isInstalled() { return fs::exists(kProgram); }

    std::optional<Sandbox> room_;
    SystemDaemons daemons_;
};

TEST_F(PolkitConsent, AsksNobodyWhenTheProcessIsRoot) {
    EXPECT_EQ(launchFromThisProcess(), "Installed successfully! [consent]");
    EXPECT_TRUE(isInstalled());
}

TEST_F(PolkitConsent, InstallsAfterTheRightPassword) {
    startDaemons();
    UserProcess user(kAdmin, launchFromThisProcess);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    EXPECT_FALSE(isInstalled()) << "installed before anybody agreed";
    agent.type("secret\n");
    EXPECT_EQ(user.result(), "Installed successfully! [consent]");
    EXPECT_TRUE(isInstalled());
    EXPECT_THAT(agent.shown(), HasSubstr("Authentication is required to install the helper that writes firmware and "
                                         "icons to your Kestrav accessory"));
}

TEST_F(PolkitConsent, AsksOnlyOnceForTwoLaunchesOfOneProcess) {
    startDaemons();
    UserProcess user(kAdmin, [] { return launchFromThisProcess() + " " + launchFromThisProcess(); });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.type("secret\n");
    EXPECT_EQ(user.result(), "Installed successfully! [consent] Installed successfully! [consent]");
    EXPECT_FALSE(agent.isAsked(1)) << "asked twice: " << agent.shown();
}

TEST_F(PolkitConsent, FailsAfterAWrongPassword) {
    startDaemons();
    UserProcess user(kAdmin, launchFromThisProcess);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.type("wrong\n");
    EXPECT_EQ(user.result(),
              "SMJError: The helper was not installed: an administrator's password was not given or was wrong, or a "
              "rule of this computer forbids it "
              "(status -60005). [no consent]");
    EXPECT_FALSE(isInstalled());
}

TEST_F(PolkitConsent, FailsWhenThePromptIsDismissed) {
    startDaemons();
    UserProcess user(kAdmin, launchFromThisProcess);
    const DismissingAgent agent(user.pid(), kAdmin);
    user.go();
    EXPECT_EQ(user.result(),
              "SMJError: The helper was not installed: the request for an administrator's password was dismissed "
              "(status -60006). [no consent]");
    EXPECT_FALSE(isInstalled());
}

TEST_F(PolkitConsent, FailsWhenThePersonLeavesInMidQuestion) {
    startDaemons();
    UserProcess user(kAdmin, launchFromThisProcess);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.leave();
    EXPECT_THAT(user.result(), HasSubstr("(status -60005). [no consent]"));
    EXPECT_FALSE(isInstalled());
}

TEST_F(PolkitConsent, FailsWithoutAnybodyToAsk) {
    startDaemons();
    UserProcess user(kAdmin, launchFromThisProcess);
    user.go();
    EXPECT_THAT(user.result(), StartsWith("SMJError: The helper was not installed: nothing can ask for an "
                                          "administrator's password here"));
    EXPECT_FALSE(isInstalled());
}

TEST_F(PolkitConsent, AsksAnAdministratorOnBehalfOfAGuest) {
    startDaemons();
    UserProcess user(kGuest, launchFromThisProcess);
    PasswordAgent agent(user.pid(), kGuest);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    EXPECT_THAT(agent.shown(), HasSubstr("kestrav-admin"));
    EXPECT_THAT(agent.shown(), Not(HasSubstr("kestrav-guest")));
    agent.type("secret\n");
    EXPECT_EQ(user.result(), "Installed successfully! [consent]");
}

TEST_F(PolkitConsent, IsRefusedByTheAdministratorsRuleWithoutAPrompt) {
    SystemDaemons::addRule(
        "polkit.addRule(function(action) {"
        "  if (action.id == 'com.corvatel.kestrav.install-helper') return polkit.Result.NO; });");
    startDaemons();
    UserProcess user(kAdmin, launchFromThisProcess);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    EXPECT_THAT(user.result(), HasSubstr("(status -60005)"));
    EXPECT_FALSE(agent.isAsked(1));
    EXPECT_FALSE(isInstalled());
}

TEST_F(PolkitConsent, IsGivenByTheAdministratorsRuleWithoutAPrompt) {
    SystemDaemons::addRule(
        "polkit.addRule(function(action, subject) {"
        "  if (action.id == 'com.corvatel.kestrav.install-helper' && subject.user == 'kestrav-guest')"
        "    return polkit.Result.YES; });");
    startDaemons();
    UserProcess user(kGuest, launchFromThisProcess);
    user.go();
    EXPECT_EQ(user.result(), "Installed successfully! [consent]");
    EXPECT_TRUE(isInstalled());
}

TEST_F(PolkitConsent, FailsWhenPolkitIsKilledWhileItAsks) {
    startDaemons();
    UserProcess user(kAdmin, launchFromThisProcess);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    daemons_.killPolkitd();
    EXPECT_THAT(user.result(), HasSubstr("the authorization service (polkit) does not answer (status -60008)"));
    EXPECT_FALSE(isInstalled());
}

TEST_F(PolkitConsent, FailsWithoutABus) {
    UserProcess user(kAdmin, launchFromThisProcess);
    user.go();
    EXPECT_THAT(user.result(), HasSubstr("(status -60008)"));
}

TEST_F(PolkitConsent, SaysThatPkexecIsMissing) {
    UserProcess user(kAdmin, [] {
        PolkitAuthorization authorization(kBless, "/usr/bin/pkexec-that-is-not-there");
        return launch(authorization);
    });
    user.go();
    EXPECT_THAT(user.result(),
                HasSubstr("the program pkexec, which asks for an administrator's password, can't be run"));
}

TEST_F(PolkitConsent, IsCertainOfNothingWhenPkexecIsKilled) {
    constexpr const char* kKilled = "/usr/libexec/kestrav/killed";
    writeScript(kKilled, "kill -9 $$\n");
    UserProcess user(kAdmin, [] {
        PolkitAuthorization authorization(kBless, kKilled);
        return launch(authorization);
    });
    user.go();
    EXPECT_THAT(user.result(), HasSubstr("(status -60008). [no consent]"));
}

TEST_F(PolkitConsent, SaysThatTheInstallerIsMissing) {
    fs::remove(kBless);
    UserProcess user(kAdmin, launchFromThisProcess);
    user.go();
    EXPECT_THAT(user.result(), HasSubstr("the helper's installer kestrav-bless is missing"));
    EXPECT_THAT(launchFromThisProcess(), HasSubstr("the helper's installer kestrav-bless is missing"));
}

TEST_F(PolkitConsent, TellsAFailedInstallationFromAMissingConsent) {
    startDaemons();
    fs::permissions("/etc/udev", fs::perms(0777));
    UserProcess user(kAdmin, launchFromThisProcess);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.type("secret\n");
    EXPECT_EQ(user.result(),
              "BlessingError: Refused: others than root can write to the folder /etc/udev. Run 'chown root:root "
              "/etc/udev && chmod go-w /etc/udev' first; until then nothing in it is safe. [consent]");
}

TEST_F(PolkitConsent, RegistersTheRightAfterThePassword) {
    startDaemons();
    UserProcess user(kAdmin, registerRight);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.type("secret\n");
    EXPECT_EQ(user.result(), "true Authorization result: 0");
    EXPECT_TRUE(fs::exists(kRight));
}

TEST_F(PolkitConsent, IsAuthorizedEvenWhenTheRightIsNotRegistered) {
    startDaemons();
    UserProcess user(kAdmin, registerRight);
    user.go();
    EXPECT_EQ(user.result(), "true Authorization result: 0");
    EXPECT_FALSE(fs::exists(kRight));
}

TEST_F(PolkitConsent, LeavesTheChildNothingOfItsEnvironment) {
    writeScript(kBless, "/usr/bin/env >/run/seen\n");
    ::setenv("LD_LIBRARY_PATH", "/tmp", 1);
    EXPECT_EQ(launchFromThisProcess(), "Installed successfully! [consent]");
    ::unsetenv("LD_LIBRARY_PATH");
    std::ifstream in("/run/seen");
    const std::string seen(std::istreambuf_iterator<char>(in), {});
    EXPECT_THAT(seen, HasSubstr("LC_ALL=C\n"));
    EXPECT_THAT(seen, Not(HasSubstr("LD_LIBRARY_PATH")));
}

TEST_F(PolkitConsent, KeepsOnlyTheBeginningOfALongComplaint) {
    writeScript(kBless, "/usr/bin/yes %s%n | /usr/bin/head -c 1000000 >&2\nexit 3\n");
    const std::string told = launchFromThisProcess();
    EXPECT_THAT(told, StartsWith("BlessingError: %s%n"));
    EXPECT_LE(told.size(), 4096U + 40U);
}

TEST_F(PolkitConsent, SaysWhenTheInstallerWasKilled) {
    writeScript(kBless, "kill -9 $$\n");
    EXPECT_EQ(launchFromThisProcess(), "BlessingError: The installer was ended in the middle of its work. [consent]");
}

TEST_F(PolkitConsent, TakesNoStatusOfTheInstallersForPkexecs) {
    for (const int status : {126, 127}) {
        writeScript(kBless, "exit " + std::to_string(status) + "\n");
        EXPECT_EQ(launchFromThisProcess(),
                  "BlessingError: The installer failed (status " + std::to_string(status) + "). [consent]");
    }
}

TEST_F(PolkitConsent, KnowsOneHelperAndOneRight) {
    PolkitAuthorization authorization(kBless);
    const auto consent = authorization.create({}, 3);
    ASSERT_TRUE(consent.handle);
    std::optional<BlessingError> error;
    EXPECT_FALSE(authorization.bless(JobDomain::systemLaunchd, "com.example.Other", *consent.handle, error));
    EXPECT_TRUE(error);
    EXPECT_FALSE(authorization.bless(JobDomain::systemLaunchd, kHelperLabel, AuthorizationRef{99}, error));
    EXPECT_NE(
        authorization.setRight(*consent.handle, "com.example.right", "authenticate-admin", "Authorize disk access"), 0);
    EXPECT_NE(authorization.setRight(*consent.handle, kHelperRight, "allow", "Authorize disk access"), 0);
    EXPECT_NE(authorization.setRight(AuthorizationRef{99}, kHelperRight, "authenticate-admin", "Authorize disk access"),
              0);
    EXPECT_FALSE(isInstalled());
    EXPECT_FALSE(fs::exists(kRight));
}

TEST_F(PolkitConsent, MayNotAskWhereInteractionIsNotAllowed) {
    startDaemons();
    UserProcess user(kAdmin, [] {
        PolkitAuthorization authorization(kBless);
        const AuthorizationItem item{"com.apple.ServiceManagement.blesshelper", "", 0};
        return std::to_string(authorization.create({&item, 1}, kAuthorizationExtendRights).status);
    });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    EXPECT_EQ(user.result(), "-60007");
    EXPECT_FALSE(agent.isAsked(1));
}

}  // namespace
}  // namespace kestrav
