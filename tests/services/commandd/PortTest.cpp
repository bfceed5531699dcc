// The one port that every updater looks at. Alone on the machine while it runs.

#include <array>
#include <cstdio>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "tests/places.h"
#include "tests/services/CommandDaemon.h"

namespace kestrav {
namespace {

constexpr std::uint16_t port = 9090;
const CommandDaemon::Conditions onItsOwn{.handed = -1, .descriptors = std::nullopt, .uid = std::nullopt};

/// Whether another program has the port; a service that ends for any other reason is at fault.
bool isKeptOut(CommandDaemon& daemon) {
    return !daemon.runs() && daemon.log().find("127.0.0.1:9090 is taken by another program") != std::string::npos;
}

TEST(DaemonOnItsPort, ListensThereAndOnLoopbackOnly) {
    CommandDaemon daemon(onItsOwn);
    if (isKeptOut(daemon)) GTEST_SKIP() << daemon.log();
    ASSERT_TRUE(daemon.runs()) << daemon.log();
    EXPECT_THAT(ask(port, "rm", {}), testing::HasSubstr("is not a command"));
    const std::string listeners = contentsOf("/proc/net/tcp");
    EXPECT_THAT(listeners, testing::HasSubstr(" 0100007F:2382 00000000:0000 0A "));
    EXPECT_THAT(listeners, testing::Not(testing::HasSubstr(" 00000000:2382 ")));
}

TEST(DaemonOnItsPort, SaysThatThePortIsTaken) {
    CommandDaemon first(onItsOwn);
    CommandDaemon second(onItsOwn);
    EXPECT_EQ(second.waitForEnd(), 1);
    EXPECT_EQ(second.log(),
              "kestrav-commandd: 127.0.0.1:9090 is taken by another program. Is the service running "
              "already?\n");
}

TEST(DaemonOnItsPort, TakesThePortOfOneThatHasJustEnded) {
    for (int i = 0; i < 3; ++i) {
        CommandDaemon daemon(onItsOwn);
        if (i == 0 && isKeptOut(daemon)) GTEST_SKIP() << daemon.log();
        ASSERT_TRUE(daemon.runs()) << daemon.log();
        EXPECT_THAT(ask(port, "rm", {}), testing::HasSubstr("is not a command"));
    }
}

std::string outputOf(const std::string& words, int& status) {
    const std::string command = places::ofProgram("kestrav-commandd") + " " + words + " 2>&1";
    FILE* output = ::popen(command.c_str(), "r");  // NOLINT: fixed words
    std::string text;
    std::array<char, 512> piece{};
    while (std::fgets(piece.data(), piece.size(), output) != nullptr)
        text += piece.data();
    status = ::pclose(output) >> 8;
    return text;
}

TEST(DaemonCall, ExplainsItselfAndTakesNoOptions) {
    int status = -1;
    EXPECT_THAT(outputOf("--help", status), testing::StartsWith("Usage: kestrav-commandd"));
    EXPECT_EQ(status, 0);
    EXPECT_THAT(outputOf("--version", status), testing::MatchesRegex("kestrav-commandd [0-9.]+\n"));
    EXPECT_EQ(status, 0);
    for (const char* words : {"--port=1", "-v", "--help --version", "''"}) {
        EXPECT_THAT(outputOf(words, status), testing::StartsWith("Usage:"));
        EXPECT_EQ(status, 2) << words;
    }
}

}  // namespace
}  // namespace kestrav
