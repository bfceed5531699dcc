#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/types.h>
#include <vector>

#include "device/linux/PosixDiskCalls.h"
#include "tests/device/fakes/bytes.h"

// What the linker puts in place of the system calls of the code under test. None touches the system.
namespace {

struct Call {
    std::string path;
    int flags = 0;
};

struct Faults {
    int interruptions = 0;  // so many calls fail with EINTR first
    int calls = 0;
    std::vector<Call> unmounts;
};

Faults& faults() {
    static Faults state;
    return state;
}

template <typename Result>
Result interruptedOr(Result result) {
    ++faults().calls;
    if (faults().interruptions-- <= 0) return result;
    errno = EINTR;
    return -1;
}

}  // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
int __wrap_umount2(const char* path, int flags) {
    faults().unmounts.push_back({path, flags});
    return interruptedOr(0);
}

ssize_t __wrap_pread(int, void*, std::size_t size, off_t) {
    return interruptedOr(static_cast<ssize_t>(size));
}

ssize_t __wrap_pwrite(int, const void*, std::size_t size, off_t) {
    return interruptedOr(static_cast<ssize_t>(size));
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace kestrav {
namespace {

class InterruptedDisks : public ::testing::Test {
  protected:
    void SetUp() override { faults() = {.interruptions = 3, .calls = 0, .unmounts = {}}; }

    PosixDiskCalls disks_;
};

TEST_F(InterruptedDisks, UnmountWithoutForceAndWithoutAnyOtherFlag) {
    disks_.unmount("/media/a");
    ASSERT_EQ(faults().unmounts.size(), 4U);
    for (const Call& call : faults().unmounts) {
        EXPECT_EQ(call.path, "/media/a");
        EXPECT_EQ(call.flags, 0);
    }
}

TEST_F(InterruptedDisks, ReadAgain) {
    std::vector<std::byte> buffer = bytes("....");
    EXPECT_EQ(disks_.pread(7, buffer, 0), 4);
    EXPECT_EQ(faults().calls, 4);
}

TEST_F(InterruptedDisks, WriteAgain) {
    EXPECT_EQ(disks_.pwrite(7, bytes("XY"), 0), 2);
    EXPECT_EQ(faults().calls, 4);
}

}  // namespace
}  // namespace kestrav
