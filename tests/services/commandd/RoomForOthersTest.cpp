#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <list>
#include <string>

#include "tests/services/commandd/CommandsOfAUser.h"

namespace kestrav {
namespace {

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
        eventually([&] {
            for (const Client& client : clients)
                turnedAway += client.readOnce(0) == "Refused: the service is busy; try again in a moment." ? 1 : 0;
            return turnedAway >= 12;
        });
        // Its connections stay open, and with them its questions.
        eventually([] { return std::filesystem::exists("/run/end"); });
        return std::to_string(turnedAway);
    });
    user.go();
    ASSERT_TRUE(eventually([this] { return childrenOf(daemon_->pid()).size() == 48; }));
    EXPECT_EQ(ask(daemon_->port(), "umount", {"/dev/sdzzs1"}), "sdzz1 was not mounted.") << "root found no room";
    std::ofstream("/run/end") << "yes";
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
        eventually([] { return std::filesystem::exists("/run/end"); });
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
    UserProcess oldest = crowdOf(kGuest, 1, daemon_->port());
    UserProcess most = crowdOf(kGuest, 47, daemon_->port());
    UserProcess some = crowdOf(kAdmin, 8, daemon_->port());
    UserProcess one = crowdOf(65534, 1, daemon_->port());
    oldest.go();
    ASSERT_TRUE(eventually([this] { return childrenOf(daemon_->pid()).size() == 1; }));
    most.go();
    ASSERT_TRUE(eventually([this] { return childrenOf(daemon_->pid()).size() == 48; }));
    some.go();
    ASSERT_TRUE(eventually([this] { return childrenOf(daemon_->pid()).size() == 56; }));
    one.go();
    EXPECT_TRUE(eventually([this] { return linesSaying(daemon_->log(), "user 4712: ") == 1; })) << daemon_->log();
    std::ofstream("/run/end") << "yes";
    EXPECT_EQ(oldest.result(), "0: Refused: the request was given up before consent was given.");
    EXPECT_EQ(most.result(), "");
    EXPECT_EQ(some.result(), "");
    EXPECT_EQ(one.result(), "") << "found no place";
}

}  // namespace
}  // namespace kestrav
