// Users who send the helper more than it may get, while it writes for somebody else.

#include <chrono>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <vector>

#include "tests/eventually.h"
#include "tests/sanitizers.h"
#include "tests/services/helper/FloodingCaller.h"
#include "tests/services/helper/RunningHelper.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

using testing::ContainsRegex;
using testing::StartsWith;

constexpr std::size_t kMebibyte = std::size_t{1} << 20U;

// The sanitizers read each byte many times more slowly.
constexpr std::size_t kCallBytes = (kMemoryIsOurs ? 30 : 3) * kMebibyte;

long kilobytes(pid_t process, const std::string& field) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string word; status >> word;) {
        long value = 0;
        if (word == field && status >> value) return value;
    }
    return -1;
}

/// Two long calls over each of twelve connections at once, as that user.
UserProcess floodOf(uid_t uid) {
    return UserProcess(uid, [] {
        const std::string call = FloodingCaller::callWithEmptyArguments(kCallBytes / 8);
        std::list<FloodingCaller> callers(12);
        std::vector<std::thread> senders;
        for (const FloodingCaller& caller : callers)
            senders.emplace_back([&] { caller.send(call) && caller.send(call); });
        for (std::thread& sender : senders)
            sender.join();
        return std::string("sent");
    });
}

class HelperInAFlood : public HelperOnALargeDisk {
  protected:
    static void makeImage() { std::ofstream(kImage, std::ios::binary) << std::string(60 * kMebibyte, 'x'); }

    /// The unit's limit. A sanitizer needs address space for itself.
    void limitMemory() const {
        if (!kMemoryIsOurs) return;
        const rlimit limit{512 * kMebibyte, 512 * kMebibyte};
        ASSERT_EQ(::prlimit(helper_.pid(), RLIMIT_AS, &limit, nullptr), 0);
    }
};

TEST_F(HelperInAFlood, EndsTheWriteThatRunsAndAnswersOthers) {
    startDaemons("NO");
    startHelper();
    limitMemory();
    makeImage();
    UserProcess root(0, callWrite);
    root.go();
    const pid_t job = jobProcess();
    ASSERT_TRUE(isWriting());
    signalOne(job, SIGSTOP);
    const long before = kilobytes(helper_.pid(), "VmHWM:");
    UserProcess one = floodOf(kAdmin);
    UserProcess another = floodOf(kGuest);
    one.go();
    another.go();
    EXPECT_EQ(one.result(), "sent");
    EXPECT_EQ(another.result(), "sent");
    // The bus itself turns callers away until the helper has read what waits there.
    EXPECT_TRUE(eventually([] { return callUnmount() == "sdzz1 was not mounted."; })) << "root was kept out";
    signalOne(job, SIGCONT);
    EXPECT_THAT(root.result(), StartsWith("Wrote 62914560 bytes to sdzz at block 1536, verified"));
    EXPECT_TRUE(helper_.runs());
    // What is freed the sanitizers keep for a while.
    if (kMemoryIsOurs) {
        EXPECT_LT(kilobytes(helper_.pid(), "VmHWM:") - before, 128 * 1024) << "holds more than a message at a time";
    }
    // Which of the two, and whether the sender was still there to be named, is up to the bus and the machine.
    EXPECT_THAT(log(), ContainsRegex(": dd +: Refused: the (request is longer than 64 KiB\\.|helper is busy;)"))
        << "nothing of the flood arrived";
}

TEST_F(Helper, RefusesManyArguments) {
    startDaemons("YES");
    startHelper();
    UserProcess user(kGuest, [] { return callHelper("dd", std::vector<std::string>(65, "x")); });
    user.go();
    EXPECT_EQ(user.result(), "LimitsExceeded: Refused: the request has too many arguments.");
}

TEST_F(HelperOnALargeDisk, IsOutlivedByTheWriteThatRunsWhenItIsKilled) {
    ASSERT_NO_FATAL_FAILURE(holdInMidWrite());
    helper_.end();
    EXPECT_THAT(user_->result(), StartsWith("NoReply: "));
    startHelper();
    UserProcess another(0, callWrite);
    another.go();
    EXPECT_THAT(another.result(), StartsWith("Refused: the disk sdzz is in use by "));
    signalOne(job_, SIGCONT);
    EXPECT_TRUE(eventually([] { return linesSaying(log(), ": Wrote 157286400 bytes") == 1; })) << log();
}

TEST_F(HelperOnALargeDisk, IsWhatEndsBeforeTheWriteWhenMemoryRunsOut) {
    ASSERT_NO_FATAL_FAILURE(holdInMidWrite());
    const auto score = [](pid_t process) {
        int value = 0;
        std::ifstream("/proc/" + std::to_string(process) + "/oom_score_adj") >> value;
        return value;
    };
    EXPECT_EQ(score(helper_.pid()), 100);
    EXPECT_LE(score(job_), 0);  // -900 under the unit, or where this process may say so
    signalOne(job_, SIGCONT);
    EXPECT_THAT(user_->result(), StartsWith("Wrote 157286400 bytes"));
}

}  // namespace
}  // namespace kestrav
