// The real service, started by somebody who left it odd surroundings.

#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <stdexcept>
#include <string>
#include <unistd.h>

#include "tests/services/CommandDaemon.h"
#include "tests/services/linesSaying.h"

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

TEST(DaemonSurroundings, MayHaveItsSignalsIgnored) {
    CommandDaemon daemon(
        {.handed = std::nullopt, .descriptors = std::nullopt, .uid = std::nullopt, .ignoresSignals = true});
    EXPECT_THAT(ask(daemon.port(), "rm", {}), StartsWith("Refused: "));
    daemon.signal(SIGTERM);
    EXPECT_EQ(daemon.waitForEnd(), 0);
}

TEST(DaemonSurroundings, MayHavePeersThatComeAndGoWithoutALineInTheLog) {
    const CommandDaemon daemon;
    daemon.signal(SIGSTOP);  // so that they have gone before it looks
    for (int i = 0; i < 20; ++i)
        Client(daemon.port()).close();
    daemon.signal(SIGCONT);
    EXPECT_THAT(ask(daemon.port(), "rm", {}), StartsWith("Refused: "));  // so it has come past all of them
    EXPECT_EQ(linesSaying(daemon.log(), "Refused: "), 1U) << daemon.log();
}

/// A pipe's writing end in [1], its reading end in [0].
std::array<UniqueFd, 2> pipeOfOnePage() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    ::fcntl(ends[1], F_SETPIPE_SZ, 4096);
    return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

TEST(DaemonSurroundings, MayHaveAReaderOfItsErrorsThatDoesNotRead) {
    const auto pipe = pipeOfOnePage();
    const std::string filling(4096, 'x');
    ASSERT_EQ(::write(pipe[1].get(), filling.data(), filling.size()), 4096);
    const CommandDaemon daemon(
        {.handed = std::nullopt, .descriptors = std::nullopt, .uid = std::nullopt, .errors = pipe[1].get()});
    EXPECT_THAT(ask(daemon.port(), "rm", {}), StartsWith("Refused: "));
}

TEST(DaemonSurroundings, MayHaveNoReaderOfItsErrors) {
    auto pipe = pipeOfOnePage();
    pipe[0].reset();
    CommandDaemon daemon(
        {.handed = std::nullopt, .descriptors = std::nullopt, .uid = std::nullopt, .errors = pipe[1].get()});
    EXPECT_THAT(ask(daemon.port(), "rm", {}), StartsWith("Refused: "));
    EXPECT_TRUE(daemon.runs());
}

}  // namespace
}  // namespace kestrav
