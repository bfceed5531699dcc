#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "base/fieldIn.h"
#include "services/asker/ProcessRecord.h"
#include "services/asker/areAll.h"
#include "tests/sandbox/ChildProcess.h"

namespace kestrav {
namespace {

TEST(FieldIn, IsWhatStandsBehindTheNameAtTheBeginningOfALine) {
    constexpr const char* kStatus = "Name:\tUid: 1\nUid:\t0\t0\t0\t0\nCapEff:\n";
    EXPECT_EQ(fieldIn(kStatus, "Uid:"), "0\t0\t0\t0");
    EXPECT_EQ(fieldIn(kStatus, "CapEff:"), "");
    EXPECT_EQ(fieldIn(kStatus, "Gid:"), "");
    EXPECT_EQ(fieldIn("scm_fds: 2", "scm_fds:"), "2");
    EXPECT_EQ(fieldIn("", "Uid:"), "");
}

// A file under /proc can be opened while its process lives, and can't be read once that has ended.
TEST(StatusField, IsEmptyWhenTheProcessEndsBeforeTheReading) {
    ChildProcess child(::fork());
    if (child.pid() == 0) {
        ::pause();
        ::_exit(0);
    }
    const UniqueFd status(::open(("/proc/" + std::to_string(child.pid()) + "/status").c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_TRUE(status);
    const std::string path = "/proc/self/fd/" + std::to_string(status.get());
    EXPECT_NE(statusField(path, "Uid:"), "");
    child.end();
    ASSERT_EQ(::access(path.c_str(), R_OK), 0) << "nothing is left to be opened";
    EXPECT_EQ(statusField(path, "Uid:"), "");
}

TEST(ProcessRecord, RunsAsTheUserOfAllItsThreadsAndAsNobodyOnceItIsGone) {
    EXPECT_TRUE(ProcessRecord(::getpid()).runsAs(::getuid()));
    EXPECT_FALSE(ProcessRecord(::getpid()).runsAs(::getuid() + 1));
    // No process has a number as large.
    EXPECT_FALSE(ProcessRecord(1 << 23).runsAs(::getuid()));
}

TEST(AreAll, IsTrueOfFourTimesTheUser) {
    EXPECT_TRUE(areAll("1000\t1000\t1000\t1000", 1000));
    EXPECT_FALSE(areAll("1000\t0\t1000\t1000", 1000));
    EXPECT_FALSE(areAll("1000\t1000\t1000", 1000));
    EXPECT_FALSE(areAll("1000\t1000\t1000\t1000\t1000", 1000));
    EXPECT_FALSE(areAll("1000 1000 1000 x", 1000));
    EXPECT_FALSE(areAll("", 0));
}

}  // namespace
}  // namespace kestrav
