#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <unistd.h>

#include "tests/sandbox/DismissingAgent.h"
#include "tests/sandbox/PasswordAgent.h"
#include "tests/services/commandd/CommandsOfAUser.h"

namespace kestrav {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST_F(CommandsOfAUser, AreCarriedOutWhereARuleLetsThem) {
    start("YES");
    UserProcess user = writeAs(kGuest);
    user.go();
    EXPECT_THAT(user.result(), StartsWith("Wrote 40000 bytes to sdzz at block 1536, verified"));
    EXPECT_TRUE(diskHasTheImage());
}

TEST_F(CommandsOfAUser, UseThatUsersRightsForTheImage) {
    start("YES");
    std::filesystem::permissions(kImage, std::filesystem::perms(0600));
    UserProcess user = writeAs(kGuest);
    user.go();
    EXPECT_THAT(user.result(), HasSubstr("Permission denied"));
    expectOneRefusal(kGuest, "dd if=/run/image.fds of=/dev/rsdzz seek=1536 bs=512: Refused: the image");
}

struct Decision {
    const char* name;
    const char* rule;
    const char* answer;
};

class CommandsWithoutConsent : public CommandsOfAUser, public testing::WithParamInterface<Decision> {};

TEST_P(CommandsWithoutConsent, LeaveTheDiskUntouchedAndALineInTheLog) {
    start(GetParam().rule);
    UserProcess user = writeAs(kGuest);
    user.go();
    EXPECT_EQ(user.result(), GetParam().answer);
    expectOneRefusal(kGuest, kAskedFor + GetParam().answer);
}

INSTANTIATE_TEST_SUITE_P(
    Decisions, CommandsWithoutConsent,
    testing::Values(Decision{"No", "NO", "Refused: an administrator did not agree."},
                    Decision{"Challenge", "AUTH_ADMIN",
                             "Refused: an administrator has to agree, and there is no way to ask for a password here."},
                    Decision{
                        "Defaults", "",
                        "Refused: an administrator has to agree, and there is no way to ask for a password here."}),
    [](const auto& row) { return row.param.name; });

TEST_F(CommandsOfAUser, AreCarriedOutAfterAnAdministratorsPassword) {
    start();
    UserProcess user = writeAs(kGuest);
    PasswordAgent agent(user.pid(), kGuest);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    EXPECT_TRUE(diskIsUntouched()) << "written before anybody agreed";
    agent.type("secret\n");
    EXPECT_THAT(user.result(), StartsWith("Wrote 40000 bytes"));
    EXPECT_TRUE(diskHasTheImage());
}

TEST_F(CommandsOfAUser, AreRefusedAfterAWrongPassword) {
    start();
    UserProcess user = writeAs(kAdmin);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.type("wrong\n");
    EXPECT_EQ(user.result(), "Refused: an administrator did not agree.");
    expectOneRefusal(kAdmin, kAskedFor + "Refused: an administrator did not agree.");
}

TEST_F(CommandsOfAUser, AreRefusedWhenThePromptIsDismissed) {
    start();
    UserProcess user = writeAs(kAdmin);
    const DismissingAgent agent(user.pid(), kAdmin);
    user.go();
    EXPECT_THAT(user.result(), StartsWith("Refused: "));
    expectOneRefusal(kAdmin, kAskedFor + "Refused: ");
}

struct Language {
    const char* name;
    const char* locale;
    const char* begins;
    const char* program;
    const char* block;
};

class PromptOf : public CommandsOfAUser, public testing::WithParamInterface<Language> {};

TEST_P(PromptOf, SaysWhatIsAgreedTo) {
    start();
    UserProcess user = writeAs(kAdmin);
    DismissingAgent agent(user.pid(), kAdmin, GetParam().locale);
    user.go();
    const std::string program = std::filesystem::read_symlink("/proc/self/exe");
    const std::string message = agent.message();
    EXPECT_THAT(message, StartsWith(GetParam().begins));
    EXPECT_THAT(message, HasSubstr(GetParam().program + (" \"" + program) + "\""));
    EXPECT_THAT(message, HasSubstr(" \"/run/image.fds\""));
    EXPECT_THAT(message, HasSubstr(" 40000"));
    EXPECT_THAT(message, HasSubstr(" sdzz"));
    EXPECT_THAT(message, testing::EndsWith(GetParam().block + std::string(" 1536)")));
    EXPECT_THAT(user.result(), StartsWith("Refused: "));
}

INSTANTIATE_TEST_SUITE_P(
    Languages, PromptOf,
    testing::Values(
        Language{"English", "C", "Authentication is required to unmount, read or write", "(program:", "from block:"},
        Language{"German", "de_DE.UTF-8", "Zum Aushängen, Lesen oder Beschreiben", "(Programm:", "ab Block:"},
        Language{"French", "fr_FR.UTF-8", "Une authentification est nécessaire", "(programme :", "à partir du bloc :"},
        Language{"Spanish", "es_ES.UTF-8", "Se requiere autenticación", "(programa:", "desde el bloque:"},
        Language{"Japanese", "ja_JP.UTF-8", "Kestrav アクセサリー", "プログラム:", "開始ブロック:"},
        Language{"Arabic", "ar_EG.UTF-8", "يلزم الاستيثاق", "البرنامج:", "ابتداءً من الكتلة:"}),
    [](const auto& row) { return row.param.name; });

TEST_F(CommandsOfAUser, AreShownInAPromptThatAFilesNameCannotChange) {
    start();
    const std::string image = "/run/$(disk)\"; <b>disk: sda&";
    std::ofstream(image, std::ios::binary) << image_;
    std::filesystem::permissions(image, std::filesystem::perms(0644));
    UserProcess user(kAdmin, [port = daemon_->port()] {
        const Client client(port);
        client.send(requestFor("dd", {R"(if=/run/$(disk)\"; <b>disk: sda&)", "of=/dev/rsdzz", "seek=1536", "bs=512"}));
        return client.readOnce(60);
    });
    DismissingAgent agent(user.pid(), kAdmin);
    user.go();
    EXPECT_THAT(agent.message(),
                HasSubstr(R"(; image: "/run/$(disk)\x22; \x3cb>disk: sda\x26"; bytes: 40000; disk: sdzz;)"));
    EXPECT_THAT(user.result(), StartsWith("Refused: "));
}

TEST_F(CommandsOfAUser, AreRefusedOnAConnectionThatTwoProcessesShare) {
    start("YES");
    UserProcess user(kGuest, [port = daemon_->port()] {
        const Client client(port);
        const ChildProcess sharer(::fork());
        if (sharer.pid() == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            while (true)
                ::pause();
        }
        client.send(requestFor("dd", {std::string("if=") + kImage, "of=/dev/rsdzz", "seek=1536", "bs=512"}));
        return client.readOnce(60);
    });
    user.go();
    EXPECT_EQ(user.result(), "Refused: several processes share the connection, so nobody can tell who asks.");
    expectOneRefusal(kGuest, kAskedFor + "Refused: several processes share the connection");
}

TEST_F(CommandsOfAUser, AreRefusedAndLoggedWhenTheConnectionPassesToAnotherProcessMeanwhile) {
    start();
    UserProcess user(kAdmin, [port = daemon_->port()] {
        Client client(port);
        client.send(requestFor("dd", {std::string("if=") + kImage, "of=/dev/rsdzz", "seek=1536", "bs=512"}));
        // Once the file is there the connection is the child's alone.
        eventually([] { return std::filesystem::exists("/run/asked"); });
        ChildProcess heir(::fork());
        if (heir.pid() == 0) {
            std::ofstream("/run/heir") << client.readOnce(60);
            ::_exit(0);
        }
        client.close();
        std::ofstream("/run/passed") << "on";
        heir.wait();
        return std::string("passed on");
    });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    std::filesystem::permissions("/run", std::filesystem::perms(0777));
    std::ofstream("/run/asked") << "yes";
    ASSERT_TRUE(eventually([] { return std::filesystem::exists("/run/passed"); }));
    agent.type("secret\n");
    EXPECT_EQ(user.result(), "passed on");
    EXPECT_EQ(contentsOf("/run/heir"), "Refused: the connection passed to another process.");
    expectOneRefusal(kAdmin, kAskedFor + "Refused: the connection passed to another process.");
}

TEST_F(CommandsOfAUser, DoNotFillTheLogWithRefusals) {
    start("NO");
    UserProcess user(kGuest, [port = daemon_->port()] {
        for (int i = 0; i < 15; ++i) {
            ask(port, "umount", {"/dev/sdzzs1"});
            const Client browser(port);
            browser.send("POST / HTTP/1.1\r\n");
            browser.readOnce();
        }
        return ask(port, "umount", {"/dev/sdzzs1"});
    });
    user.go();
    EXPECT_EQ(user.result(), "Refused: an administrator did not agree.");
    EXPECT_TRUE(hasNoChildren());
    daemon_->signal(SIGTERM);
    EXPECT_EQ(daemon_->waitForEnd(), 0);
    EXPECT_EQ(
        linesSaying(daemon_->log(), "user 4712: Refused: ") +
            linesSaying(daemon_->log(), "user 4712: umount /dev/sdzzs1: Refused: an administrator did not agree."),
        20U);
    EXPECT_EQ(linesSaying(daemon_->log(), "user 4712: 11 more refusals within a minute are not listed"), 1U)
        << daemon_->log();
}

TEST_F(CommandsOfAUser, AreRefusedWhenPolkitIsKilledWhileItAsks) {
    start();
    UserProcess user = writeAs(kAdmin);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    daemons_.killPolkitd();
    EXPECT_THAT(user.result(), StartsWith("Refused: the authorization service (polkit) could not decide"));
    expectOneRefusal(kAdmin, kAskedFor + "Refused: the authorization service (polkit) could not decide");
}

TEST_F(CommandsOfAUser, AreRefusedWhenTheBusIsKilledInMidQuestionAndAskedAboutWhenItIsBack) {
    start();
    UserProcess user = writeAs(kAdmin);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    daemons_.killBus();
    daemons_.killPolkitd();
    EXPECT_THAT(user.result(), StartsWith("Refused: the authorization service (polkit) c"));
    expectOneRefusal(kAdmin, kAskedFor + "Refused: the authorization service (polkit) c");
    daemons_.start();
    UserProcess again = writeAs(kAdmin);
    PasswordAgent secondAgent(again.pid(), kAdmin);
    again.go();
    ASSERT_TRUE(secondAgent.isAsked()) << secondAgent.shown();
    secondAgent.type("secret\n");
    EXPECT_THAT(again.result(), StartsWith("Wrote 40000 bytes"));
}

TEST_F(CommandsOfAUser, AreToldThatPolkitCannotSeeThemWhereProcIsHidden) {
    ASSERT_EQ(::mount("proc", "/proc", "proc", 0, "hidepid=2"), 0);
    start();
    UserProcess user = writeAs(kAdmin);
    user.go();
    EXPECT_EQ(linesSaying(user.result(), "It can't look at the program that asks; /proc must not be hidden"), 1U);
    EXPECT_EQ(linesSaying(daemon_->log(), ".."), 0U) << daemon_->log();
    EXPECT_TRUE(diskIsUntouched());
}

TEST_F(CommandsOfAUser, AreRefusedWithoutABus) {
    daemon_.emplace();
    UserProcess user = writeAs(kAdmin);
    user.go();
    EXPECT_THAT(user.result(), StartsWith("Refused: the authorization service (polkit) can't be asked"));
    expectOneRefusal(kAdmin, kAskedFor + "Refused: the authorization service (polkit) can't be asked");
}

TEST_F(CommandsOfAUser, AreNotAskedAboutOnceThatUserHasGone) {
    start();
    UserProcess user = writeAs(kAdmin);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    user.kill();
    EXPECT_TRUE(hasNoChildren()) << "the question is still open";
    expectOneRefusal(kAdmin, kAskedFor + "Refused: the request was given up before consent was given.");
}

TEST_F(CommandsOfAUser, AreNotAskedAboutOnceThatUserHasEndedItsSending) {
    start();
    UserProcess user(kAdmin, [port = daemon_->port()] {
        const Client client(port);
        client.send(requestFor("umount", {"/dev/sdzzs1"}));
        eventually([] { return std::filesystem::exists("/run/asked"); });
        client.finishSending();
        return client.readOnce(60);
    });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    std::ofstream("/run/asked") << "yes";
    EXPECT_EQ(user.result(), "Refused: the request was given up before consent was given.");
    EXPECT_TRUE(hasNoChildren()) << "the question is still open";
}

TEST_F(CommandsOfAUser, DoNotHoldUpTheServicesEndWithAPrompt) {
    start();
    UserProcess user = writeAs(kAdmin);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    daemon_->signal(SIGTERM);
    EXPECT_EQ(daemon_->waitForEnd(), 0);
    EXPECT_EQ(user.result(), "Refused: the request was given up before consent was given.");
    expectOneRefusal(kAdmin, kAskedFor + "Refused: the request was given up before consent was given.");
}

TEST_F(CommandsOfAUser, NeedNoPasswordToBeRefusedForWhatTheyAre) {
    start();
    UserProcess user(kAdmin, [port = daemon_->port()] { return ask(port, "rm", {"-rf", "/"}); });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    EXPECT_EQ(user.result(), "Refused: \"rm\" is not a command of this service.");
    expectOneRefusal(kAdmin, "rm -rf /: Refused: ");
    EXPECT_FALSE(agent.isAsked(1));
}

}  // namespace
}  // namespace kestrav
