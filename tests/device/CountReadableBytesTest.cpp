#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "device/countReadableBytes.h"
#include "tests/TemporaryFolder.h"
#include "tests/sanitizers.h"

namespace kestrav {
namespace {

// The exit status of a child process that ends with what `work` returns; -1 if it ended otherwise.
template <typename Work>
int exitStatusOf(Work work) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(work());
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
    return WEXITSTATUS(status);
}

class CountReadableBytes : public ::testing::Test {
  protected:
    std::string fileOf(std::uint64_t size) {
        std::string path = folder_.path() / "image";
        std::ofstream(path).close();
        std::filesystem::resize_file(path, size);
        return path;
    }

    TemporaryFolder folder_;
};

TEST_F(CountReadableBytes, IsWhatTheFileHolds) {
    // Around the size of the reading buffer, too.
    for (const std::uint64_t size : {0ULL, 1ULL, 40000ULL, 262143ULL, 262144ULL, 262145ULL, 5000000ULL})
        EXPECT_EQ(countReadableBytes(fileOf(size)), size);
}

TEST_F(CountReadableBytes, CountsHolesAndWhatLiesBetweenThem) {
    const std::string path = fileOf(0);
    std::fstream file(path, std::ios::in | std::ios::out);
    file.seekp(1 << 20) << "data";
    file.seekp(3 << 20) << "data" << std::flush;
    EXPECT_EQ(countReadableBytes(path), (3U << 20) + 4);
    std::filesystem::resize_file(path, 5 << 20);
    EXPECT_EQ(countReadableBytes(path), 5U << 20);
}

TEST_F(CountReadableBytes, IsWhatComesThroughAPipe) {
    const std::string path = folder_.path() / "pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    std::thread writer([&path] { std::ofstream(path) << std::string(100000, 'x') << std::flush << "end"; });
    EXPECT_EQ(countReadableBytes(path), 100003U);
    writer.join();
}

TEST_F(CountReadableBytes, IsWhatAFileHoldsThatClaimsToBeEmpty) {
    const std::string path = "/proc/self/cmdline";
    ASSERT_EQ(std::filesystem::file_size(path), 0U);
    std::ifstream file(path, std::ios::binary);
    const auto held = std::distance(std::istreambuf_iterator<char>(file), {});
    ASSERT_GT(held, 0);
    // In a child, whose alarm ends a count that never ends. Its command line is its parent's.
    const int result = exitStatusOf([&] {
        ::alarm(30);
        return countReadableBytes(path) == static_cast<std::uint64_t>(held) ? 0 : 1;
    });
    EXPECT_EQ(result, 0) << "1: a wrong size, -1: no end";
}

TEST_F(CountReadableBytes, IsAbsentForWhatCannotBeRead) {
    EXPECT_EQ(countReadableBytes((folder_.path() / "missing").string()), std::nullopt);
    EXPECT_EQ(countReadableBytes(folder_.path().string()), std::nullopt) << "a folder";
    EXPECT_EQ(countReadableBytes(""), std::nullopt);
}

TEST_F(CountReadableBytes, IsAbsentForAPathWithANulInside) {
    EXPECT_EQ(countReadableBytes(fileOf(3) + std::string(1, '\0') + "more"), std::nullopt);
}

TEST_F(CountReadableBytes, IsAbsentWhenAReadFails) {
    // Reading one's own memory as a file works at mapped addresses only, and none is mapped at 0.
    EXPECT_EQ(countReadableBytes("/proc/self/mem"), std::nullopt);
}

TEST_F(CountReadableBytes, IsAbsentForAnUnreadableFile) {
    constexpr uid_t kNobody = 65534;
    const std::string path = fileOf(3);
    ASSERT_EQ(::chmod(folder_.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(path.c_str(), 0), 0);
    // Nothing is unreadable for root, so a child looks at it as somebody else.
    const auto looksInAChild = [&path] {
        if (::geteuid() == 0 && ::setuid(kNobody) != 0) return 2;
        return countReadableBytes(path) ? 1 : 0;
    };
    EXPECT_EQ(exitStatusOf(looksInAChild), 0);
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    EXPECT_EQ(exitStatusOf(looksInAChild), 1) << "it was the file's mode that counted";
}

// The most memory, in KiB, that this process has had resident since it was made.
std::uint64_t peakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::uint64_t kib = 0;
        if (word == "VmHWM:" && status >> kib) return kib;
    }
    return UINT64_MAX;
}

TEST_F(CountReadableBytes, OfFourGibibytesTakesLittleMemory) {
    static constexpr std::uint64_t kSize = std::uint64_t{4} << 30;
    const std::string path = fileOf(kSize);
    // A child, so that the peak is of this work alone.
    const int result = exitStatusOf([&path] {
        const std::uint64_t before = peakMemory();
        const bool sized = countReadableBytes(path) == kSize;
        const std::uint64_t after = peakMemory();
        const bool small = after - before <= 4096 && (!kMemoryIsOurs || after <= 32768);
        return !sized ? 2 : small ? 0 : 1;
    });
    EXPECT_EQ(result, 0) << "1: too much memory, 2: a wrong size";
}

}  // namespace
}  // namespace kestrav
