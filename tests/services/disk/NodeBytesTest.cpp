#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <system_error>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "services/disk/NodeBytes.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

TEST(NodeBytes, AdmitsThatItReadMemory) {
    char path[] = "/dev/shm/kestrav-XXXXXX";  // a file system that is memory and nothing else
    UniqueFd file(::mkstemp(path));
    ASSERT_TRUE(file);
    ::unlink(path);
    NodeBytes bytes(std::move(file), 65536, 512);
    alignas(4096) static std::byte buffer[65536];
    ASSERT_TRUE(bytes.write(0, buffer));
    ASSERT_TRUE(bytes.flush());
    const auto from = bytes.readBack(0, buffer);
    ASSERT_TRUE(from);
    EXPECT_EQ(from.value(), DiskBytes::ReadFrom::memory);
}

TEST(NodeBytes, CallsADiskThatEndsEarlyAnError) {
    const TemporaryFolder folder;
    UniqueFd file(::open(folder.file("short", "x").c_str(), O_RDWR | O_CLOEXEC));
    NodeBytes bytes(std::move(file), 65536, 512);
    alignas(4096) static std::byte buffer[512];
    const auto got = bytes.read(0, buffer);
    ASSERT_FALSE(got);
    EXPECT_EQ(got.problem().cause, std::errc::io_error);
}

TEST(NodeBytes, ReportsAFullDisk) {
    UniqueFd full(::open("/dev/full", O_RDWR | O_CLOEXEC));
    ASSERT_TRUE(full);
    NodeBytes bytes(std::move(full), 65536, 512);
    alignas(4096) static std::byte buffer[512];
    const auto written = bytes.write(0, buffer);
    ASSERT_FALSE(written);
    EXPECT_EQ(written.problem().cause, std::errc::no_space_on_device);
    EXPECT_EQ(written.problem().sentence, "No space left on device.");
}

}  // namespace
}  // namespace kestrav
