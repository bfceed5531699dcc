// The real service, started by somebody who left it odd surroundings.

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>

#include "tests/services/CommandDaemon.h"

namespace kestrav {
namespace {

using testing::StartsWith;

TEST(DaemonSurroundings, MayLackInputAndOutput) {
    const CommandDaemon daemon(
        {.handed = std::nullopt, .descriptors = std::nullopt, .uid = std::nullopt, .withoutInputAndOutput = true});
    const std::string descriptors = "/proc/" + std::to_string(daemon.pid()) + "/fd/";
    EXPECT_EQ(std::filesystem::read_symlink(descriptors + "0"), "/dev/null");
    EXPECT_EQ(std::filesystem::read_symlink(descriptors + "1"), "/dev/null");
    EXPECT_THAT(ask(daemon.port(), "rm", {}), StartsWith("Refused: "));
}

}  // namespace
}  // namespace kestrav
