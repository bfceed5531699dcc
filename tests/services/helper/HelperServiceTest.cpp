#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <vector>

#include "base/UniqueFd.h"
#include "tests/eventually.h"
#include "tests/places.h"
#include "tests/sandbox/PasswordAgent.h"
#include "tests/services/helper/RunningHelper.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::StartsWith;

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
    EXPECT_TRUE(eventually([&] { return ::kill(job, 0) != 0; })) << "the request's process outlived its service";
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
    signalOne(jobProcess(), SIGKILL);
    EXPECT_EQ(user.result(),
              "Failed: Failed: the request's process ended before it was done. If it was a write, repeat it.");
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.") << "the helper itself did not survive";
}

TEST_F(Helper, EndsWithTheBus) {
    startDaemons();
    startHelper();
    daemons_.killBus();
    EXPECT_EQ(helper_.wait(), 1);
    daemons_.start();
    startHelper();
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.");
}

TEST_F(Helper, SaysThatThereIsNoBus) {
    const ProgramRun run = runProgram({places::ofProgram("kestrav-helper")});
    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_THAT(run.err, HasSubstr("The helper can't serve on the system bus: "));
}

TEST_F(Helper, ServesWhileNobodyReadsItsErrors) {
    startDaemons();
    ASSERT_EQ(::mkfifo("/run/errors", 0600), 0);
    const UniqueFd pipe(::open("/run/errors", O_RDWR | O_NONBLOCK | O_CLOEXEC));
    const std::string filling(4096, 'x');
    while (::write(pipe.get(), filling.data(), filling.size()) > 0) {
    }
    startHelper("/run/errors");
    UserProcess user(0, callUnmount);
    user.go();
    ASSERT_TRUE(user.endsWithin(30s)) << "waits for somebody to read";
    EXPECT_EQ(user.result(), "sdzz1 was not mounted.");
}

TEST_F(Helper, ServesWhenNobodyCanReadItsErrors) {
    startDaemons();
    ASSERT_EQ(::mkfifo("/run/errors", 0600), 0);
    UniqueFd pipe(::open("/run/errors", O_RDWR | O_NONBLOCK | O_CLOEXEC));
    startHelper("/run/errors");
    pipe.reset();
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.");
    EXPECT_TRUE(helper_.runs());
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
    EXPECT_TRUE(eventually([&] { return childrenOf(helper_.pid()).empty(); }));
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
    ASSERT_TRUE(eventually([&] { return childrenOf(helper_.pid()).size() == 48; }));
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.") << "root found no room";
    EXPECT_EQ(user.result(), "12");
}

TEST_F(Helper, RefusesALongRequest) {
    startDaemons("YES");
    startHelper();
    UserProcess user(kGuest, [] { return callHelper("dd", {std::string(70'000, 'x')}).substr(0, 70); });
    user.go();
    EXPECT_EQ(user.result(), "LimitsExceeded: Refused: the request is longer than 64 KiB.");
    expectOneRefusal(kGuest, "Refused: the request is longer than 64 KiB.");
}

TEST_F(Helper, RunsOnlyTheUpdatersCommands) {
    startDaemons("YES");
    startHelper();
    UserProcess user(kGuest, [] { return callHelper("/bin/sh", {"-c", "id >/run/pwned; echo %s%n"}); });
    user.go();
    EXPECT_THAT(user.result(), StartsWith("Refused: "));
    EXPECT_FALSE(fs::exists("/run/pwned"));
    expectOneRefusal(kGuest, "/bin/sh -c id >/run/pwned; echo %s%n: Refused: ");
}

TEST_F(Helper, AsksNobodyAboutWhatItWouldRefuseAnyway) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, [] { return callHelper("rm", {"-rf", "/"}); });
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    EXPECT_EQ(user.result(), "Refused: \"rm\" is not a command of this service.");
    EXPECT_FALSE(agent.isAsked(1));
    expectOneRefusal(kAdmin, "rm -rf /: Refused: ");
}

TEST_F(Helper, EndsOnSigtermAtOnceWhenIdle) {
    startDaemons();
    startHelper();
    signalOne(helper_.pid(), SIGTERM);
    EXPECT_EQ(helper_.wait(), 0);
}

TEST_F(HelperOnALargeDisk, EndsOnSigtermAfterTheWorkThatRuns) {
    ASSERT_NO_FATAL_FAILURE(holdInMidWrite());
    for (const int number : {SIGTERM, SIGINT})
        signalOne(job_, number);  // as one does who ends a whole group of processes
    signalOne(helper_.pid(), SIGTERM);
    std::string answer;
    eventually([&] { return (answer = callUnmount()) != "sdzz1 was not mounted."; });
    EXPECT_EQ(answer, "Failed: Refused: the helper is being stopped; try again in a moment.");
    EXPECT_TRUE(helper_.runs());
    signalOne(job_, SIGCONT);
    EXPECT_THAT(user_->result(), StartsWith("Wrote 157286400 bytes"));
    EXPECT_EQ(helper_.wait(), 0);
}

TEST_F(Helper, DoesNotLetAPromptHoldUpItsEnd) {
    startDaemons();
    startHelper();
    UserProcess user(kAdmin, callWrite);
    PasswordAgent agent(user.pid(), kAdmin);
    user.go();
    ASSERT_TRUE(agent.isAsked()) << agent.shown();
    signalOne(helper_.pid(), SIGTERM);
    EXPECT_EQ(helper_.wait(), 0);
    EXPECT_EQ(user.result(), "Failed: Refused: the helper is being stopped; try again in a moment.");
    expectOneRefusal(kAdmin, "bs=512: Refused: the helper is being stopped");
}

TEST_F(Helper, IsReplacedByAnInstallationOfAnotherProgram) {
    startDaemons();
    startHelper();
    ASSERT_EQ(runProgram({kBless, "install"}).out, "The helper is installed already.\n");
    std::this_thread::sleep_for(300ms);
    EXPECT_TRUE(helper_.runs()) << "ended although nothing changed";
    fs::remove("/etc/systemd/system/com.corvatel.KestravHelper.service");
    ASSERT_EQ(runProgram({kBless, "install"}).out, "The helper is installed.\n");
    std::this_thread::sleep_for(300ms);
    EXPECT_TRUE(helper_.runs()) << "ended although its program stayed the same";
    std::ofstream("/usr/libexec/kestrav/kestrav-helper", std::ios::app) << "another";
    ASSERT_EQ(runProgram({kBless, "install"}).out, "The helper is installed.\n");
    EXPECT_TRUE(eventually([&] { return !helper_.runs(); }));
    EXPECT_THAT(callUnmount(), StartsWith("Refused: ")) << "the bus did not start the new one";
}

TEST_F(HelperOnALargeDisk, IsReplacedAfterTheWriteThatRuns) {
    ASSERT_NO_FATAL_FAILURE(holdInMidWrite());
    std::ofstream("/usr/libexec/kestrav/kestrav-helper", std::ios::app) << "another";
    ASSERT_EQ(runProgram({kBless, "install"}).out, "The helper is installed.\n");
    std::this_thread::sleep_for(300ms);
    EXPECT_TRUE(helper_.runs()) << "ended under a write";
    signalOne(job_, SIGCONT);
    EXPECT_THAT(user_->result(), StartsWith("Wrote 157286400 bytes"));
    EXPECT_EQ(helper_.wait(), 0);
}

TEST_F(Helper, IsGoneAfterItsUninstallation) {
    startDaemons();
    startHelper();
    ASSERT_EQ(runProgram({kBless, "uninstall"}).exitStatus, 0);
    EXPECT_TRUE(eventually([&] { return !helper_.runs(); }));
    EXPECT_THAT(callUnmount(), StartsWith("ServiceUnknown: "));
}

TEST(HelperProgram, KnowsHelpAndVersionAndNothingElse) {
    EXPECT_EQ(runProgram({places::ofProgram("kestrav-helper"), "--help"}).exitStatus, 0);
    EXPECT_THAT(runProgram({places::ofProgram("kestrav-helper"), "--version"}).out, StartsWith("kestrav-helper "));
    EXPECT_EQ(runProgram({places::ofProgram("kestrav-helper"), "--bus=session"}).exitStatus, 2);
    EXPECT_EQ(runProgram({places::ofProgram("kestrav-helper"), "--help", "--help"}).exitStatus, 2);
}

}  // namespace
}  // namespace kestrav
