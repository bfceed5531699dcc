// A write that runs keeps the computer awake.

#include <chrono>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/eventually.h"
#include "tests/services/helper/FakeLogind.h"
#include "tests/services/helper/RunningHelper.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

using testing::StartsWith;

class HelperBesideLogind : public HelperOnALargeDisk {
  protected:
    void expectHeldWhileWriting(const std::string& lines) {
        startHelper();
        makeLargeImage();
        UserProcess user(0, callWrite);
        user.go();
        const pid_t job = jobProcess();
        ASSERT_TRUE(isWriting());
        signalOne(job, SIGSTOP);
        EXPECT_EQ(FakeLogind::said(), lines);
        signalOne(job, SIGCONT);
        EXPECT_THAT(user.result(), StartsWith("Wrote 157286400 bytes"));
        EXPECT_TRUE(eventually([&] { return FakeLogind::said() == lines + "released\n"; })) << FakeLogind::said();
    }
};

TEST_F(HelperBesideLogind, KeepsTheComputerAwakeWhileItWrites) {
    startDaemons();
    const FakeLogind logind;
    ASSERT_NO_FATAL_FAILURE(expectHeldWhileWriting("ready\ngave sleep:shutdown block\n"));
    EXPECT_EQ(callUnmount(), "sdzz1 was not mounted.");
    EXPECT_EQ(FakeLogind::said(), "ready\ngave sleep:shutdown block\nreleased\n") << "an unmount needs nobody awake";
}

TEST_F(HelperBesideLogind, IsContentWithADelay) {
    startDaemons();
    const FakeLogind logind("delay");
    expectHeldWhileWriting("ready\nrefused block\ngave sleep:shutdown delay\n");
}

TEST_F(HelperBesideLogind, WritesWithoutAnInhibitorToo) {
    startDaemons();
    const FakeLogind logind("none");
    startHelper();
    makeLargeImage();
    EXPECT_THAT(callWrite(), StartsWith("Wrote 157286400 bytes"));
    EXPECT_EQ(FakeLogind::said(), "ready\nrefused block\nrefused delay\n");
}

}  // namespace
}  // namespace kestrav
