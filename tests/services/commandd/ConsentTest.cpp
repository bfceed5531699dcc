#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
#include <optional>
#include <string>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "tests/TemporaryFolder.h"
#include "tests/sandbox/DismissingAgent.h"
#include "tests/sandbox/PasswordAgent.h"
#include "tests/sandbox/Sandbox.h"
#include "tests/sandbox/SystemDaemons.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/SimulatedAccessory.h"
#include "tests/services/linesSaying.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kImage = "/run/image.fds";
constexpr uid_t kAdmin = 4711;
constexpr uid_t kGuest = 4712;
constexpr std::size_t kFirmwareByte = 786432;
const std::string kAskedFor = "dd if=/run/image.fds of=/dev/rsdzz seek=1536 bs=512: ";

/// The real service as root on a free port, with the real polkitd, beside a simulated accessory.
class CommandsOfAUser : public testing::Test {
  protected:
    void SetUp() override {
        if (!Sandbox::isPossible()) GTEST_SKIP() << "needs root";
        accessory_.emplace(before_);
        room_.emplace();
        addAccount("kestrav-admin", kAdmin, true);
        addAccount("kestrav-guest", kGuest, false);
        SystemDaemons::addActions("/usr/libexec/kestrav/kestrav-bless");
        std::ofstream(kImage, std::ios::binary) << image_;
        std::filesystem::permissions(kImage, std::filesystem::perms(0644));
    }

    void start(const std::string& decision = {}) {
        daemons_.start(decision);
        daemon_.emplace();
    }

    UserProcess writeAs(uid_t uid) const {
        return UserProcess(uid, [port = daemon_->port()] {
            const Client client(port);
            client.send(requestFor("dd", {std::string("if=") + kImage, "of=/dev/rsdzz", "seek=1536", "bs=512"}));
            return client.readOnce(60);
        });
    }

    bool diskIsUntouched() const { return accessory_->diskBytes() == before_; }
    bool diskHasTheImage() const {
        std::string after = before_;
        return accessory_->diskBytes() == after.replace(kFirmwareByte, image_.size(), image_);
    }
    /// Nothing was done, and exactly one line of the log is about that user and says so.
    void expectOneRefusal(uid_t uid, const std::string& words) const {
        EXPECT_TRUE(diskIsUntouched());
        const std::string who = "kestrav-commandd: user " + std::to_string(uid) + ": ";
        EXPECT_EQ(linesSaying(daemon_->log(), who), 1U) << daemon_->log();
        EXPECT_EQ(linesSaying(daemon_->log(), who + words), 1U) << daemon_->log();
    }
    bool hasNoChildren() const {
        for (int i = 0; i < 1000 && !daemon_->children().empty(); ++i)
            std::this_thread::sleep_for(10ms);
        return daemon_->children().empty();
    }

    const std::string before_ = patternOf(std::size_t{4} << 20U, 7);
    const std::string image_ = patternOf(40000, 3);
    std::optional<SimulatedAccessory> accessory_;
    std::optional<Sandbox> room_;
    SystemDaemons daemons_;
    std::optional<CommandDaemon> daemon_;
};

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
        while (!std::filesystem::exists("/run/asked"))
            std::this_thread::sleep_for(10ms);
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
    for (int i = 0; i < 1000 && !std::filesystem::exists("/run/passed"); ++i)
        std::this_thread::sleep_for(10ms);
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
        while (!std::filesystem::exists("/run/asked"))
            std::this_thread::sleep_for(10ms);
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

TEST_F(CommandsOfAUser, OfOneProcessAreAskedAboutOnce) {
    start();
    UserProcess user(kAdmin, [port = daemon_->port()] {
        const std::string first = ask(port, "umount", {"/dev/sdzzs1"});
        return first + " " + ask(port, "umount", {"/dev/sdzzs1"});
    });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.type("secret\n");
    EXPECT_EQ(user.result(), "sdzz1 was not mounted. sdzz1 was not mounted.");
    EXPECT_FALSE(agent.isAsked(1)) << "asked twice: " << agent.shown();
}

TEST_F(CommandsOfAUser, OfOneProcessAreDeniedTogetherAfterAWrongPassword) {
    start();
    UserProcess user(kAdmin, [port = daemon_->port()] {
        const std::string update =
            ask(port, "umount", {"/dev/sdzzs1"}) + " " +
            ask(port, "dd", {std::string("if=") + kImage, "of=/dev/rsdzz", "seek=1536", "bs=512"});
        std::ofstream("/run/denied") << update;
        return ask(port, "umount", {"/dev/sdzzs1"});
    });
    std::filesystem::permissions("/run", std::filesystem::perms(0777));
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.type("wrong\n");
    ASSERT_TRUE(agent.isAsked()) << "a new update is asked about anew; " << agent.shown();
    EXPECT_EQ(contentsOf("/run/denied"),
              "Refused: an administrator did not agree. Refused: an administrator did not agree.");
    agent.type("secret\n");
    EXPECT_EQ(user.result(), "sdzz1 was not mounted.");
    EXPECT_TRUE(diskIsUntouched());
}

TEST_F(CommandsOfAUser, OfOneProcessAreDeniedTogetherWhenThePromptIsDismissed) {
    start();
    UserProcess user(kAdmin, [port = daemon_->port()] {
        for (int i = 0; i < 3; ++i)
            ask(port, "umount", {"/dev/sdzzs1"});
        return ask(port, "umount", {"/dev/sdzz9"});
    });
    DismissingAgent agent(user.pid(), kAdmin);
    user.go();
    EXPECT_THAT(user.result(), StartsWith("Refused: "));
    EXPECT_NE(agent.message(), "");
    EXPECT_NE(agent.message(), "") << "the third one is asked about anew";
    EXPECT_FALSE(agent.isAsked()) << "the second one was asked about";
}

TEST_F(CommandsOfAUser, OfOneProcessAtOnceShowOnePrompt) {
    start();
    UserProcess user(kAdmin, [port = daemon_->port()] {
        // As many as an updater of twenty accessories sends.
        std::list<Client> clients;
        for (int i = 0; i < 20; ++i) {
            clients.emplace_back(port);
            clients.back().send(requestFor("umount", {"/dev/sdzzs1"}));
        }
        std::string answers;
        for (const Client& client : clients)
            answers += client.readOnce() + "\n";
        return answers;
    });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    agent.type("secret\n");
    const std::string answers = user.result();
    EXPECT_EQ(linesSaying(answers, "sdzz1 was not mounted."), 20U) << answers;
    EXPECT_FALSE(agent.isAsked(1)) << "asked twice: " << agent.shown();
}

TEST_F(CommandsOfAUser, LeaveRoomForOthers) {
    start();
    // Stopped, polkitd answers nobody, so every question stays open.
    daemons_.stopPolkitd();
    UserProcess user(kGuest, [port = daemon_->port()] {
        std::list<Client> clients;
        int turnedAway = 0;
        for (int i = 0; i < 60; ++i) {
            clients.emplace_back(port);
            clients.back().send(requestFor("umount", {"/dev/sdzzs1"}));
        }
        for (int tries = 0; tries < 2000 && turnedAway < 12; ++tries) {
            std::this_thread::sleep_for(10ms);
            for (const Client& client : clients)
                turnedAway += client.readOnce(0) == "Refused: the service is busy; try again in a moment." ? 1 : 0;
        }
        return std::to_string(turnedAway);
    });
    user.go();
    for (int i = 0; i < 1000 && daemon_->children().size() < 48; ++i)
        std::this_thread::sleep_for(5ms);
    EXPECT_EQ(ask(daemon_->port(), "umount", {"/dev/sdzzs1"}), "sdzz1 was not mounted.") << "root found no room";
    EXPECT_EQ(user.result(), "12");
}

/// Of `count` requests of that user, all open at once, which were answered by the time that /run/end is there, and how.
UserProcess crowdOf(uid_t uid, int count, std::uint16_t port) {
    return UserProcess(uid, [count, port] {
        std::list<Client> clients;
        for (int i = 0; i < count; ++i) {
            clients.emplace_back(port);
            clients.back().send(requestFor("umount", {"/dev/sdzzs1"}));
        }
        while (!std::filesystem::exists("/run/end"))
            std::this_thread::sleep_for(10ms);
        std::string answered;
        int number = 0;
        for (const Client& client : clients) {
            const std::string answer = client.readOnce(0);
            if (!answer.empty()) answered += std::to_string(number) + ": " + answer;
            ++number;
        }
        return answered;
    });
}

TEST_F(CommandsOfAUser, ThatHaveWaitedLongestGiveWayToAUserWhoHasFewer) {
    start();
    // Stopped, polkitd answers nobody, so every question stays open.
    daemons_.stopPolkitd();
    const auto waitFor = [](const std::function<bool()>& condition) {
        for (int i = 0; i < 3000 && !condition(); ++i)
            std::this_thread::sleep_for(10ms);
        return condition();
    };
    UserProcess oldest = crowdOf(kGuest, 1, daemon_->port());
    UserProcess most = crowdOf(kGuest, 47, daemon_->port());
    UserProcess some = crowdOf(kAdmin, 8, daemon_->port());
    UserProcess one = crowdOf(65534, 1, daemon_->port());
    oldest.go();
    ASSERT_TRUE(waitFor([this] { return daemon_->children().size() == 1; }));
    most.go();
    ASSERT_TRUE(waitFor([this] { return daemon_->children().size() == 48; }));
    some.go();
    ASSERT_TRUE(waitFor([this] { return daemon_->children().size() == 56; }));
    one.go();
    EXPECT_TRUE(waitFor([this] { return linesSaying(daemon_->log(), "user 4712: ") == 1; })) << daemon_->log();
    std::ofstream("/run/end") << "yes";
    EXPECT_EQ(oldest.result(), "0: Refused: the request was given up before consent was given.");
    EXPECT_EQ(most.result(), "");
    EXPECT_EQ(some.result(), "");
    EXPECT_EQ(one.result(), "") << "found no place";
}

}  // namespace
}  // namespace kestrav
