#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

#include "device/countReadableBytes.h"
#include "tests/TemporaryFolder.h"

// What the linker puts in place of the system calls of the code under test. Each does the real thing unless told.
namespace {

struct Faults {
    int interruptedOpens = 0;  // so many fail with EINTR first
    int interruptedReads = 0;
    int noPlaces = 0;       // what SEEK_DATA fails with, as on a file system that doesn't know it
    ssize_t readable = -1;  // reading fails beyond so many bytes
    int openFlags = 0;      // what the last one was given
};

Faults& faults() {
    static Faults state;
    return state;
}

bool happens(int& count) {
    if (count <= 0) return false;
    --count;
    errno = EINTR;
    return true;
}

}  // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
int __real_open(const char* path, int flags, ...);
ssize_t __real_read(int fd, void* into, std::size_t size);
off_t __real_lseek(int fd, off_t place, int from);

// NOLINTNEXTLINE(cert-dcl50-cpp): as the system declares it
int __wrap_open(const char* path, int flags, ...) {
    faults().openFlags = flags;
    std::va_list rest;
    va_start(rest, flags);
    const auto mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
    va_end(rest);
    return happens(faults().interruptedOpens) ? -1 : __real_open(path, flags, mode);
}

ssize_t __wrap_read(int fd, void* into, std::size_t size) {
    if (happens(faults().interruptedReads)) return -1;
    if (faults().readable < 0) return __real_read(fd, into, size);
    if (faults().readable == 0) {
        errno = EIO;
        return -1;
    }
    const ssize_t count = __real_read(fd, into, std::min(size, static_cast<std::size_t>(faults().readable)));
    faults().readable -= std::max<ssize_t>(count, 0);
    return count;
}

off_t __wrap_lseek(int fd, off_t place, int from) {
    if (from != SEEK_DATA || faults().noPlaces == 0) return __real_lseek(fd, place, from);
    errno = faults().noPlaces;
    return -1;
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace kestrav {
namespace {

class ReadingFaults : public ::testing::Test {
  protected:
    void SetUp() override {
        std::ofstream(image_) << std::string(5000, 'f');
        faults() = {};
    }
    void TearDown() override { faults() = {}; }

    TemporaryFolder folder_;
    std::string image_ = folder_.path() / "image";
};

TEST_F(ReadingFaults, FollowAnInterruption) {
    faults().interruptedOpens = 3;
    faults().interruptedReads = 3;
    EXPECT_EQ(countReadableBytes(image_), 5000U);
    EXPECT_EQ(faults().interruptedOpens, 0);
    EXPECT_EQ(faults().interruptedReads, 0);
}

TEST_F(ReadingFaults, AreFoundWhereTheFileSystemKnowsNoHoles) {
    for (const int error : {EINVAL, EOPNOTSUPP, EIO}) {
        faults().noPlaces = error;
        faults().readable = -1;
        EXPECT_EQ(countReadableBytes(image_), 5000U);
        // Only a reader meets the place that can't be read.
        faults().readable = 1000;
        EXPECT_EQ(countReadableBytes(image_), std::nullopt) << error;
    }
}

TEST_F(ReadingFaults, AreFoundBesideHoles) {
    std::filesystem::resize_file(image_, 1 << 20);
    EXPECT_EQ(countReadableBytes(image_), 1U << 20);
    faults().readable = 1000;
    EXPECT_EQ(countReadableBytes(image_), std::nullopt);
}

TEST_F(ReadingFaults, AreAllThatIsLookedFor) {
    EXPECT_TRUE(countReadableBytes(image_));
    // No child inherits the file, and a terminal that is taken for an image does not become this process's own.
    EXPECT_EQ(faults().openFlags, O_RDONLY | O_CLOEXEC | O_NOCTTY);
}

}  // namespace
}  // namespace kestrav
