#include <cstddef>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <system_error>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "services/privileged/NodeBytes.h"
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
    ASSERT_FALSE(bytes.write(0, buffer));
    ASSERT_FALSE(bytes.flush());
    const auto [error, fromDisk] = bytes.readBack(0, buffer);
    EXPECT_FALSE(error);
    EXPECT_FALSE(fromDisk);
}

TEST(NodeBytes, CallsADiskThatEndsEarlyAnError) {
    const TemporaryFolder folder;
    UniqueFd file(::open(folder.file("short", "x").c_str(), O_RDWR | O_CLOEXEC));
    NodeBytes bytes(std::move(file), 65536, 512);
    alignas(4096) static std::byte buffer[512];
    EXPECT_EQ(bytes.read(0, buffer), std::errc::io_error);
}

TEST(NodeBytes, ReportsAFullDisk) {
    UniqueFd full(::open("/dev/full", O_RDWR | O_CLOEXEC));
    ASSERT_TRUE(full);
    NodeBytes bytes(std::move(full), 65536, 512);
    alignas(4096) static std::byte buffer[512];
    EXPECT_EQ(bytes.write(0, buffer), std::errc::no_space_on_device);
}

}  // namespace
}  // namespace kestrav
