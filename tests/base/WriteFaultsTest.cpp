// A system that takes nothing of what it is given, and names no reason. No real one can be talked into that.

#include <array>
#include <cerrno>
#include <cstddef>
#include <gtest/gtest.h>
#include <unistd.h>

#include "base/wholeFile.h"

namespace {

bool takesNothing = false;

}  // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
ssize_t __real_write(int fd, const void* bytes, std::size_t size);

ssize_t __wrap_write(int fd, const void* bytes, std::size_t size) {
    return takesNothing ? 0 : __real_write(fd, bytes, size);
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace kestrav {
namespace {

TEST(WriteAll, FailsWhereNothingIsTaken) {
    const std::array<std::byte, 3> bytes{};
    takesNothing = true;
    const auto written = writeAll(STDOUT_FILENO, bytes);
    takesNothing = false;
    ASSERT_FALSE(written);
    EXPECT_EQ(written.problem().cause.value(), EIO);
}

}  // namespace
}  // namespace kestrav
