#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>

#include "base/EndableChild.h"
#include "base/runChild.h"

namespace kestrav {
namespace {

TEST(EndableChild, IsEndedOnAnotherThread) {
    EndableChild child;
    std::thread impatient;
    // Asked again and again, since nobody tells when it has begun.
    std::atomic<bool> isOver = false;
    impatient = std::thread([&] {
        while (!isOver) {
            child.end();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    const auto run = runChild({"/bin/sleep", "600"}, &child);
    isOver = true;
    impatient.join();
    ASSERT_TRUE(run);
    EXPECT_EQ(run.value().exitStatus, -1);
}

TEST(EndableChild, IsLeftAloneBeforeAndAfterItsTime) {
    EndableChild child;
    child.end();
    const auto run = runChild({"/bin/true"}, &child);
    ASSERT_TRUE(run);
    EXPECT_EQ(run.value().exitStatus, 0);
    child.end();
}

}  // namespace
}  // namespace kestrav
