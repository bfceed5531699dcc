// What becomes of a question that nobody has answered in time: the server, with a short patience, and the real polkitd.

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "services/asker/PolkitConsent.h"
#include "services/commandd/Server.h"
#include "tests/TemporaryFolder.h"
#include "tests/base/FileLog.h"
#include "tests/childrenOf.h"
#include "tests/eventually.h"
#include "tests/sandbox/PasswordAgent.h"
#include "tests/sandbox/Sandbox.h"
#include "tests/sandbox/SystemDaemons.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/gate/GateWithoutDisks.h"
#include "tests/services/linesSaying.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;
using testing::StartsWith;

constexpr uid_t kAdmin = 4711;
const std::string kLate = "Refused: nobody has agreed within 50 seconds; nothing was done.";
const std::string kCarriedOut = "Refused: there is no /dev/sdzzs1; ";  // by the gate, once somebody has agreed
const std::string kDenied = "Refused: an administrator did not agree.";

/// The answers of a program that asks again and again, each time its last answer was that nobody has agreed.
std::string answersUntilDecided(std::uint16_t port) {
    while (true) {
        const std::string answer = ask(port, "umount", {"/dev/sdzzs1"});
        if (answer != kLate) return answer;
        std::ofstream("/run/late") << "yes";
    }
}

/// The answer of a program that asks once, closes its connection and lives on.
std::string answerOfOneWhoStays(std::uint16_t port) {
    const std::string late = ask(port, "umount", {"/dev/sdzzs1"});
    std::ofstream("/run/late") << late;
    while (!std::filesystem::exists("/run/end"))
        std::this_thread::sleep_for(10ms);
    return late;
}

class LateConsent : public testing::Test {
  protected:
    void SetUp() override {
        if (!Sandbox::isPossible()) GTEST_SKIP() << "needs root";
        room_.emplace();
        std::filesystem::permissions("/run", std::filesystem::perms(0777));
        addAccount("kestrav-admin", kAdmin, true);
        SystemDaemons::addActions("/usr/libexec/kestrav/kestrav-bless");
        daemons_.start();
        startServer();
    }

    void startServer() {
        UniqueFd listener = listenOnFreePort(port_);
        ::fcntl(listener.get(), F_SETFL, O_NONBLOCK);  // as the server expects it
        const pid_t pid = ::fork();
        if (pid == 0) serve(std::move(listener));
        server_ = ChildProcess(pid);
    }
    [[noreturn]] void serve(UniqueFd listener) const {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        FileLog lines(log_);
        RequestLog log(lines);
        const NoDevices devices;
        const MountinfoTable mounts;
        PolkitConsent consent;
        Gate gate(consent, devices, mounts, log);
        ::_exit(Server(std::move(listener), gate, log, {.toAgree = 2s}).run() ? 0 : 1);
    }
    std::size_t children() const { return childrenOf(server_.pid()).size(); }

    const TemporaryFolder folder_;
    const std::string log_ = folder_.file("log", "");
    std::optional<Sandbox> room_;
    SystemDaemons daemons_;
    std::uint16_t port_ = 0;
    ChildProcess server_;
};

TEST_F(LateConsent, ServesTheNextRequestOfTheSameProcess) {
    UserProcess user(kAdmin, [port = port_] { return answersUntilDecided(port); });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    ASSERT_TRUE(eventually([] { return std::filesystem::exists("/run/late"); }));
    agent.type("secret\n");
    EXPECT_THAT(user.result(), StartsWith(kCarriedOut)) << contentsOf(log_);
    EXPECT_FALSE(agent.isAsked(1)) << "asked twice: " << agent.shown();
    EXPECT_TRUE(eventually([this] { return children() == 0; }));
    EXPECT_EQ(linesSaying(contentsOf(log_), kCarriedOut), 1U) << "done for a request that had been refused";
    EXPECT_GE(linesSaying(contentsOf(log_), "user 4711: umount /dev/sdzzs1: " + kLate), 1U);
}

TEST_F(LateConsent, IsNoConsentForAnotherProcess) {
    UserProcess user(kAdmin, [port = port_] { return answerOfOneWhoStays(port); });
    UserProcess other(kAdmin, [port = port_] { return ask(port, "umount", {"/dev/sdzzs1"}); });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    ASSERT_TRUE(eventually([] { return std::filesystem::exists("/run/late"); }));
    agent.type("secret\n");
    EXPECT_TRUE(eventually([this] { return children() == 0; }));
    other.go();
    EXPECT_EQ(other.result(),
              "Refused: an administrator has to agree, and there is no way to ask for a password here.");
    std::ofstream("/run/end") << "yes";
    EXPECT_EQ(user.result(), kLate);
}

TEST_F(LateConsent, DenialServesTheNextRequestOfTheSameProcess) {
    UserProcess user(kAdmin, [port = port_] { return answersUntilDecided(port); });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    ASSERT_TRUE(eventually([] { return std::filesystem::exists("/run/late"); }));
    agent.type("wrong\n");
    EXPECT_EQ(user.result(), kDenied);
    EXPECT_FALSE(agent.isAsked(1)) << "asked twice: " << agent.shown();
}

TEST_F(LateConsent, IsWaitedForWhenTheConnectionIsClosed) {
    UserProcess user(kAdmin, [port = port_] { return answerOfOneWhoStays(port); });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    ASSERT_TRUE(eventually([] { return std::filesystem::exists("/run/late"); }));
    EXPECT_FALSE(eventually([this] { return children() == 0; }, 1s)) << "the question went with the connection";
    std::ofstream("/run/end") << "yes";
    EXPECT_EQ(user.result(), kLate);
}

TEST_F(LateConsent, IsNotWaitedForOnceTheProcessHasEnded) {
    UserProcess user(kAdmin, [port = port_] { return ask(port, "umount", {"/dev/sdzzs1"}); });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    EXPECT_EQ(user.result(), kLate);
    user.kill();
    EXPECT_TRUE(eventually([this] { return children() == 0; })) << "the question is still open";
}

TEST_F(LateConsent, HoldsNeitherTheConnectionNorTheServicesEnd) {
    UserProcess user(kAdmin, [port = port_] {
        const Client client(port);
        client.send(requestFor("umount", {"/dev/sdzzs1"}));
        std::string answer = client.readOnce();
        client.finishSending();
        pollfd closed{client.socket(), POLLIN, 0};
        char byte = 0;
        const bool ends = ::poll(&closed, 1, 20'000) == 1 && ::recv(client.socket(), &byte, 1, MSG_DONTWAIT) == 0;
        std::ofstream("/run/closed") << (ends ? "closed" : "open");
        while (!std::filesystem::exists("/run/end"))
            std::this_thread::sleep_for(10ms);
        return answer;
    });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    ASSERT_TRUE(eventually([] { return !contentsOf("/run/closed").empty(); }));
    EXPECT_EQ(contentsOf("/run/closed"), "closed");
    EXPECT_EQ(children(), 1U) << "the question is over";
    ::kill(server_.pid(), SIGTERM);
    EXPECT_EQ(server_.wait(), 0);
    std::ofstream("/run/end") << "yes";
    EXPECT_EQ(user.result(), kLate);
}

}  // namespace
}  // namespace kestrav
