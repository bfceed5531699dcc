#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
#include <string>

#include "tests/sandbox/DismissingAgent.h"
#include "tests/sandbox/PasswordAgent.h"
#include "tests/services/commandd/CommandsOfAUser.h"

namespace kestrav {
namespace {

using testing::StartsWith;

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

}  // namespace
}  // namespace kestrav
