#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/openStandardDescriptors.h"

namespace kestrav {
namespace {

bool isNull(int descriptor) {
    struct stat opened {};
    struct stat null {};
    return ::fstat(descriptor, &opened) == 0 && ::stat("/dev/null", &null) == 0 && opened.st_rdev == null.st_rdev;
}

/// Closes the descriptors of `closed` (one bit each) in a process of its own. 0 when the missing ones lead to /dev/null
/// afterwards, and the others where they led before.
int afterOpening(unsigned closed) {
    const pid_t child = ::fork();
    if (child == 0) {
        const int kept = ::open("/", O_PATH);
        for (int number = 0; number <= 2; ++number) {
            ::dup2(kept, number);
            if ((closed & (1U << static_cast<unsigned>(number))) != 0) ::close(number);
        }
        if (!openStandardDescriptors()) ::_exit(1);
        for (int number = 0; number <= 2; ++number) {
            if (isNull(number) != ((closed & (1U << static_cast<unsigned>(number))) != 0)) ::_exit(2);
        }
        ::_exit(::fcntl(2, F_GETFD) >= 0 ? 0 : 3);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status;
}

TEST(OpenStandardDescriptors, OpensTheMissingOnesAndLeavesTheOthers) {
    for (unsigned closed = 0; closed < 8; ++closed)
        EXPECT_EQ(afterOpening(closed), 0) << closed;
}

}  // namespace
}  // namespace kestrav
