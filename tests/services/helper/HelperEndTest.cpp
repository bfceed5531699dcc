// The helper in a process of its own, among parts that fail, and how it and its writers end.

#include <chrono>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <unistd.h>

#include "services/disk/SysfsBlockDevices.h"
#include "services/gate/Gate.h"
#include "services/gate/RequestLog.h"
#include "services/helper/HelperService.h"
#include "tests/base/FileLog.h"
#include "tests/eventually.h"
#include "tests/services/asker/FakeConsent.h"
#include "tests/services/helper/RunningHelper.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

struct Parts {
    FakeConsent consent = {};
    bool logFails = false;
    std::chrono::milliseconds window = RequestLog::kWindow;
    std::chrono::milliseconds idleTime = HelperService::kIdleTime;
};

/// Adds the service with parts of the test's to a fixture.
template <class Fixture>
class WithParts : public Fixture {
  protected:
    void startService(Parts parts) {
        const pid_t child = ::fork();
        if (child == 0) serve(parts);
        this->helper_ = ChildProcess(child);
        ASSERT_TRUE(eventually(helperHasItsName));
    }

  private:
    [[noreturn]] static void serve(Parts& parts) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // a service that hangs must not outlive the test
        FileLog lines(kLog, [&parts](std::string_view entry) { return parts.logFails && entry != "ready"; });
        try {
            const SysfsBlockDevices devices;
            const MountinfoTable mounts;
            RequestLog log(lines, parts.window);
            Gate gate(parts.consent, devices, mounts, log);
            ::_exit(HelperService(gate, log, parts.idleTime).run() ? 0 : 1);
        } catch (const std::exception&) {
            std::ofstream(kLog, std::ios::app) << "escaped\n";
            ::_exit(2);
        }
    }
};

class HelperOfParts : public WithParts<Helper> {};
class HelperOfPartsInMidWrite : public WithParts<HelperOnALargeDisk> {};

TEST_F(HelperOfParts, LetsNoExceptionOutOfARequestsProcess) {
    startDaemons();
    Parts parts;
    parts.consent.meanwhile = [] { throw std::runtime_error("out of luck"); };
    startService(parts);
    UserProcess user(kGuest, callWrite);
    user.go();
    EXPECT_EQ(user.result(),
              "Failed: Failed: the request's process ended before it was done. If it was a write, repeat it.");
    EXPECT_THAT(log(), HasSubstr(" ended with status 1: out of luck\n"));
    EXPECT_THAT(log(), Not(HasSubstr("escaped"))) << "it ran on into the service";
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.") << "the helper itself did not survive";
}

TEST_F(HelperOfPartsInMidWrite, WaitsForTheWriteThatRunsWhenItFails) {
    startDaemons();
    Parts parts;
    parts.logFails = true;
    makeLargeImage();
    startService(parts);
    user_.emplace(0, callWrite);
    user_->go();
    job_ = jobProcess();
    ASSERT_TRUE(isWriting());
    signalOne(job_, SIGSTOP);
    // It has to log this refusal, and fails.
    UserProcess other(kGuest, [] { return callHelper("dd", {std::string(70'000, 'x')}); });
    other.go();
    EXPECT_FALSE(eventually([&] { return !helper_.runs(); }, 500ms)) << "ended under a write";
    signalOne(job_, SIGCONT);
    EXPECT_THAT(user_->result(), StartsWith("Wrote 157286400 bytes"));
    EXPECT_EQ(helper_.wait(), 1);
}

TEST_F(HelperOfParts, SaysByItselfHowManyRefusalsItOnlyCounted) {
    startDaemons();
    Parts parts;
    parts.consent.problem = refused("no.");
    parts.window = 2s;
    startService(parts);
    UserProcess user(kGuest, [] {
        for (int i = 0; i < 25; ++i)
            callUnmount();
        return callUnmount();
    });
    user.go();
    EXPECT_EQ(user.result(), "AccessDenied: Refused: no.");
    EXPECT_TRUE(eventually([] { return linesSaying(log(), "more refusals within a minute are not listed") > 0; }))
        << log();
    EXPECT_TRUE(helper_.runs());
}

TEST_F(HelperOfParts, EndsItselfWhenItWasIdle) {
    startDaemons();
    Parts parts;
    parts.idleTime = 700ms;
    startService(parts);
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.");
    const auto answered = std::chrono::steady_clock::now();
    EXPECT_TRUE(eventually([&] { return !helper_.runs(); }));
    EXPECT_GE(std::chrono::steady_clock::now() - answered, 600ms);
    EXPECT_EQ(helper_.wait(), 0);
    EXPECT_THAT(callUnmount(), StartsWith("Refused: ")) << "the bus did not start another";
}

TEST_F(HelperOfPartsInMidWrite, IsNotIdleWhileItWrites) {
    startDaemons();
    Parts parts;
    parts.idleTime = 800ms;
    makeLargeImage();
    startService(parts);
    user_.emplace(0, callWrite);
    user_->go();
    job_ = jobProcess();
    ASSERT_TRUE(isWriting());
    signalOne(job_, SIGSTOP);
    EXPECT_FALSE(eventually([&] { return !helper_.runs(); }, 2s)) << "the idle time passed under a write";
    signalOne(job_, SIGCONT);
    EXPECT_THAT(user_->result(), StartsWith("Wrote 157286400 bytes"));
}

TEST(HelperService, IsIdleForAMinute) {
    EXPECT_EQ(HelperService::kIdleTime, 60s);
}

TEST_F(HelperOnALargeDisk, TakesNoNoticeOfSignalsWithoutAMeaning) {
    ASSERT_NO_FATAL_FAILURE(holdInMidWrite());
    for (const int number : {SIGUSR1, SIGUSR2, SIGALRM, SIGPIPE, SIGVTALRM, SIGPROF}) {
        signalOne(helper_.pid(), number);
        signalOne(job_, number);
    }
    signalOne(job_, SIGCONT);
    EXPECT_THAT(user_->result(), StartsWith("Wrote 157286400 bytes"));
    EXPECT_TRUE(helper_.runs());
}

class HelperToldToEnd : public HelperOnALargeDisk, public testing::WithParamInterface<int> {};

TEST_P(HelperToldToEnd, DoesSoAfterTheWriteThatRuns) {
    ASSERT_NO_FATAL_FAILURE(holdInMidWrite());
    signalOne(helper_.pid(), GetParam());
    signalOne(job_, GetParam());  // as one does who ends a whole group of processes
    EXPECT_FALSE(eventually([&] { return !helper_.runs(); }, 300ms));
    signalOne(job_, SIGCONT);
    EXPECT_THAT(user_->result(), StartsWith("Wrote 157286400 bytes"));
    EXPECT_EQ(helper_.wait(), 0);
}

INSTANTIATE_TEST_SUITE_P(Signals, HelperToldToEnd, testing::Values(SIGTERM, SIGINT, SIGHUP, SIGQUIT),
                         [](const auto& row) { return std::string("Signal") + std::to_string(row.param); });

}  // namespace
}  // namespace kestrav
