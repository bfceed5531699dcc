#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "command/HelperInstallation.h"
#include "command/SMJError.h"
#include "command/linux/PolkitAuthorization.h"
#include "tests/base/RecordingLog.h"
#include "tests/eventually.h"
#include "tests/sandbox/DismissingAgent.h"
#include "tests/sandbox/PasswordAgent.h"
#include "tests/services/asker/dropCapabilities.h"
#include "tests/services/helper/RunningHelper.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

TEST_F(Helper, ServesRootWithoutAskingAnybody) {
    startDaemons("NO");
    startHelper();
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.");
    EXPECT_THAT(callWrite(), MatchesRegex("Wrote 40000 bytes to sdzz at block 1536, verified, [0-9.]+ MB/s\\."));
    EXPECT_TRUE(diskHasTheImage());
    EXPECT_THAT(log(), HasSubstr("user 0: dd if=/run/image.fds of=/dev/rsdzz seek=1536 bs=512: Wrote 40000 bytes"));
}

TEST_F(Helper, RefusesARootThatHasGivenItsRightsUp) {
    startDaemons("YES");
    startHelper();
    UserProcess root(0, [] {
        dropCapabilities();
        return callWrite();
    });
    root.go();
    EXPECT_EQ(root.result(),
              "AccessDenied: Refused: the process that asks has given up the rights that this takes, or was started "
              "without them.");
    expectOneRefusal(0, "Refused: the process that asks has given up the rights");
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
    expectOneRefusal(kGuest, "Permission denied");
}

const std::string kAskedFor = "dd if=/run/image.fds of=/dev/rsdzz seek=1536 bs=512: ";

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
    expectOneRefusal(kGuest, kAskedFor + std::string(GetParam().answer));
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

TEST_F(Helper, DeniesTheRequestsOfOneProcessTogether) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, [] {
        const std::string update = callUnmount() + " " + callWrite();
        return update + " " + callUnmount();
    });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.type("wrong\n");
    ASSERT_TRUE(agent.isAsked()) << "a new update is asked about anew; " << agent.shown();
    agent.type("secret\n");
    EXPECT_EQ(user.result(),
              "AccessDenied: Refused: an administrator did not agree. "
              "AccessDenied: Refused: an administrator did not agree. sdzz1 was not mounted.");
    EXPECT_TRUE(diskIsUntouched());
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

TEST_F(Helper, IsInstalledAfterAPromptInThePersonsLanguage) {
    startDaemons();
    UserProcess user(kAdmin, [] {
        PolkitAuthorization authorization(kBless);
        RecordingLog log;
        std::optional<AuthorizationRef> authRef;
        try {
            HelperInstallation(authorization, log).blessHelper(authRef);
        } catch (const SMJError& error) {
            return std::string("dismissed");
        }
        return std::string("installed");
    });
    DismissingAgent agent(user.pid(), kAdmin, "de_DE.UTF-8");
    user.go();
    EXPECT_THAT(agent.message(), StartsWith("Zum Installieren des Hilfsdienstes, der Firmware und Symbole"));
    EXPECT_EQ(user.result(), "dismissed");
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
    expectOneRefusal(kAdmin, kAskedFor + "Refused: an administrator did not agree.");
}

TEST_F(Helper, DoesNotLetAStrangerFillItsLog) {
    startDaemons("NO");
    startHelper();
    UserProcess user(kGuest, [] {
        for (int i = 0; i < 30; ++i)
            callUnmount();
        return callWrite();
    });
    user.go();
    EXPECT_THAT(user.result(), StartsWith("AccessDenied: Refused: "));
    signalOne(helper_.pid(), SIGTERM);
    EXPECT_EQ(helper_.wait(), 0);
    EXPECT_EQ(linesSaying(log(), "user 4712: umount /dev/sdzzs1: Refused: "), 20U);
    EXPECT_EQ(linesSaying(log(), "user 4712: 11 more refusals within a minute are not listed"), 1U) << log();
    EXPECT_EQ(linesSaying(log(), "user 4712"), 21U);
}

TEST_F(Helper, RefusesWhenThePromptIsDismissed) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, callWrite);
    const DismissingAgent agent(user.pid(), kAdmin);
    user.go();
    EXPECT_THAT(user.result(), StartsWith("AccessDenied: Refused: "));
    expectOneRefusal(kAdmin, kAskedFor + "Refused: ");
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
    expectOneRefusal(kAdmin, kAskedFor + "Refused: an administrator has to agree");
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
    expectOneRefusal(kAdmin, kAskedFor + "Refused: the authorization service (polkit) could not decide");
}

TEST_F(Helper, NamesNoUserForACallerThatHadGoneBeforeItLooked) {
    startDaemons();
    startHelper();
    signalOne(helper_.pid(), SIGSTOP);
    UserProcess user(kGuest, callAndGo);
    user.go();
    EXPECT_EQ(user.result(), "");
    signalOne(helper_.pid(), SIGCONT);
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.") << "what came later was not served";
    EXPECT_EQ(linesSaying(log(),
                          "kestrav-helper: unknown: umount /dev/sdzzs1: Refused: the system does not tell who is "
                          "asking."),
              1U)
        << log();
    EXPECT_EQ(linesSaying(log(), "4294967295"), 0U) << log();
}

TEST_F(Helper, BeginsNothingForACallerThatIsGone) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, callWrite);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    user.kill();
    ASSERT_TRUE(eventually([&] { return childrenOf(helper_.pid()).empty(); }));
    expectOneRefusal(kAdmin, kAskedFor + "gone before the request was begun; nothing was done");
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
    ASSERT_TRUE(eventually([&] { return childrenOf(helper_.pid()).empty(); }));
    EXPECT_THAT(log(), HasSubstr(": Wrote 157286400 bytes"));
}

}  // namespace
}  // namespace kestrav
