#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "command/CommandService.h"
#include "json/tree/readJSON.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/LoopbackService.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::KilledBySignal;
using ::testing::StartsWith;

using Texts = std::vector<std::string>;

CommandEndpoint impatient(std::int32_t port) {
    return {.port = port, .connectSeconds = 1, .readSeconds = 1};
}

CommandEndpoint patient(std::int32_t port) {
    return {.port = port};
}

std::set<std::string> descriptors() {
    std::set<std::string> open;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
        open.insert(entry.path().filename());
    return open;
}

/// What `run` logs, and how many descriptors it leaves behind once the service is gone.
struct Outcome {
    Texts log;
    std::size_t leftOpen = 0;
};

Outcome runAgainst(LoopbackBehaviour behaviour, const std::string& argument) {
    const std::set<std::string> before = descriptors();
    RecordingLog log;
    {
        const LoopbackService service(std::move(behaviour));
        EXPECT_EQ(CommandService(log, impatient(service.port())).runWithCommand("dd", Texts{argument}), "");
    }
    const std::set<std::string> after = descriptors();
    Texts left;
    std::ranges::set_difference(after, before, std::back_inserter(left));
    for (const std::string& fd : left)
        ::close(std::stoi(fd));
    return {log.entries(), left.size()};
}

// --- the request

struct Request {
    std::string command;
    Texts arguments;
    std::string json;
};

class RunWithCommandSends : public ::testing::TestWithParam<Request> {};

TEST_P(RunWithCommandSends, OneJsonObjectAndNothingElse) {
    const LoopbackService service;
    RecordingLog log;
    CommandService(log, patient(service.port())).runWithCommand(GetParam().command, GetParam().arguments);
    EXPECT_THAT(service.requests(), ElementsAre(GetParam().json));
}

INSTANTIATE_TEST_SUITE_P(
    Requests, RunWithCommandSends,
    ::testing::Values(Request{"dd", {"bs=512"}, R"({"command":"dd","arguments":["bs=512"]})"},
                      Request{"dd",
                              {"if=/tmp/a b", "of=/dev/rdisk2", "seek=1536", "bs=512"},
                              R"({"command":"dd","arguments":["if=/tmp/a b","of=/dev/rdisk2","seek=1536","bs=512"]})"},
                      Request{"umount", {}, R"({"command":"umount","arguments":[]})"},
                      Request{"", {""}, R"({"command":"","arguments":[""]})"},
                      Request{"größe", {"100 %"}, R"({"command":"größe","arguments":["100 %"]})"}));

class RunWithCommandEscapes : public ::testing::TestWithParam<std::string> {};

TEST_P(RunWithCommandEscapes, SoThatTheServiceReadsTheTextsBack) {
    const LoopbackService service;
    RecordingLog log;
    CommandService(log, patient(service.port())).runWithCommand(GetParam(), Texts{GetParam(), "last"});
    const std::vector<std::string> requests = service.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_TRUE(std::ranges::none_of(requests[0], [](char c) { return static_cast<unsigned char>(c) < 0x20; }));
    const auto read = readJSON(requests[0]);
    const auto* map = std::get_if<Tree>(&read);
    ASSERT_NE(map, nullptr);
    ASSERT_EQ(map->size(), 2U);
    ASSERT_NE(map->member("command"), nullptr);
    EXPECT_EQ(*map->member("command"), Tree(GetParam()));
    ASSERT_NE(map->member("arguments"), nullptr);
    EXPECT_EQ(*map->member("arguments"), Tree::list({Tree(GetParam()), Tree("last")}));
}

INSTANTIATE_TEST_SUITE_P(Texts, RunWithCommandEscapes,
                         ::testing::Values("a \"quoted\" word", "back\\slash", "line\nfeed\r\ttab\x1b\x7f",
                                           std::string("nul\0inside", 10), "/solidus/", "\xf4\x8f\xbf\xbf"));

TEST(RunWithCommand, SendsEveryCallOverAConnectionOfItsOwn) {
    const LoopbackService service;
    RecordingLog log;
    CommandService client(log, patient(service.port()));
    client.runWithCommand("first", {});
    client.runWithCommand("second", {});
    EXPECT_THAT(service.requests(),
                ElementsAre(StartsWith(R"({"command":"first")"), StartsWith(R"({"command":"second")")));
}

TEST(RunWithCommand, ServesSeveralThreadsAtOnce) {
    // Nobody is answered before all eight requests are there.
    std::promise<void> allHere;
    std::atomic<int> missing = 8;
    const LoopbackService service([&, released = allHere.get_future().share()](LoopbackConnection& connection) {
        connection.receiveRequest();
        if (--missing == 0) allHere.set_value();
        released.wait_for(std::chrono::seconds(10));
        connection.send("done");
    });
    RecordingLog log;
    CommandService client(log, patient(service.port()));
    std::vector<std::thread> callers(8);
    for (std::thread& caller : callers)
        caller = std::thread([&client] { EXPECT_EQ(client.runWithCommand("dd", Texts{"x"}), ""); });
    for (std::thread& caller : callers)
        caller.join();
    EXPECT_EQ(log.entries(), Texts(8, "done"));
}

// --- the reply

struct Reply {
    std::string sent;
    Texts logged;
};

class RunWithCommandLogs : public ::testing::TestWithParam<Reply> {};

TEST_P(RunWithCommandLogs, TheReplyAsDataAndCloses) {
    const Outcome outcome = runAgainst(answers(GetParam().sent), "x");
    EXPECT_EQ(outcome.log, GetParam().logged);
    EXPECT_EQ(outcome.leftOpen, 0U);
}

INSTANTIATE_TEST_SUITE_P(Replies, RunWithCommandLogs,
                         ::testing::Values(Reply{"2 blocks written", {"2 blocks written"}},
                                           Reply{"%s%n 100 % %x", {"%s%n 100 % %x"}},
                                           Reply{"two\nlines\r\n", {"two\nlines\r\n"}},
                                           Reply{std::string("nul\0inside", 10), {std::string("nul\0inside", 10)}},
                                           Reply{"größe \xf4\x8f\xbf\xbf", {"größe \xf4\x8f\xbf\xbf"}},
                                           Reply{std::string(10240, 'a'), {std::string(10240, 'a')}},
                                           Reply{std::string(20000, 'a'), {std::string(10240, 'a')}}));

// Not UTF-8: a stray byte, overlong forms, a surrogate, beyond the last code point, a character cut by the read size.
INSTANTIATE_TEST_SUITE_P(Rejected, RunWithCommandLogs,
                         ::testing::Values(Reply{"ok \xff", {}}, Reply{"\x80", {}}, Reply{"\xc0\x80", {}},
                                           Reply{"\xe0\x80\xaf", {}}, Reply{"\xed\xa0\x80", {}},
                                           Reply{"\xf4\x90\x80\x80", {}},
                                           Reply{std::string(10239, 'a') + "ß and more", {}}));

TEST(RunWithCommand, TakesTheFirstPieceForTheWholeReply) {
    const Outcome outcome = runAgainst(answersInPieces({"first", "second"}, std::chrono::milliseconds(300)), "x");
    EXPECT_THAT(outcome.log, ElementsAre("first"));
    EXPECT_EQ(outcome.leftOpen, 0U);
}

// --- failures

TEST(RunWithCommand, LogsAnUnknownHost) {
    RecordingLog log;
    CommandService client(log, {.address = "256.256.256.256"});
    EXPECT_EQ(client.runWithCommand("dd", {}), "");
    EXPECT_THAT(log.entries(), ElementsAre(StartsWith("SocketError.queryFailed: ")));
}

TEST(RunWithCommand, LogsThatWaitingFailed) {
    const LoopbackService service;
    RecordingLog log;
    CommandService client(log, {.port = service.port(), .connectSeconds = -1});
    EXPECT_EQ(client.runWithCommand("dd", {}), "");
    EXPECT_THAT(log.entries(), ElementsAre(StartsWith("SocketError.connectionClosed: ")));
}

TEST(RunWithCommand, LogsARefusalAtOnce) {
    const UniqueFd nobodyListens = boundSocket(SOCK_STREAM);
    const std::size_t before = openDescriptors();
    RecordingLog log;
    const Clock::time_point start = Clock::now();
    CommandService client(log, {.port = portOf(nobodyListens.get()), .connectSeconds = 60});
    EXPECT_EQ(client.runWithCommand("dd", Texts{"x"}), "");
    EXPECT_LT(secondsSince(start), 30);
    EXPECT_THAT(log.entries(), ElementsAre(StartsWith("SocketError.unknownError: ")));
    EXPECT_EQ(openDescriptors(), before);
}

TEST(RunWithCommand, LogsATimeOutWhenTheConnectionIsNeitherAcceptedNorRefused) {
    const FullListener full;
    const std::size_t before = openDescriptors();
    RecordingLog log;
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(CommandService(log, impatient(full.port())).runWithCommand("dd", Texts{"x"}), "");
    EXPECT_GE(secondsSince(start), 1.0);
    EXPECT_THAT(log.entries(), ElementsAre(StartsWith("SocketError.connectionTimeout: ")));
    EXPECT_EQ(openDescriptors(), before);
}

TEST(RunWithCommand, LeavesTheDescriptorOpenWhenSendingFails) {
    const Outcome outcome = runAgainst(resetsInMidRequest(), std::string(32 << 20, 'x'));
    EXPECT_THAT(outcome.log, ElementsAre(StartsWith("SocketError.unknownError: ")));
    EXPECT_EQ(outcome.leftOpen, 1U);
}

TEST(RunWithCommand, GivesUpOnAServiceThatNeverAnswersAndCloses) {
    std::promise<void> peerClosed;
    const LoopbackService service([&](LoopbackConnection& connection) {
        connection.receiveRequest();
        connection.waitUntilPeerCloses();
        peerClosed.set_value();
    });
    RecordingLog log;
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(CommandService(log, impatient(service.port())).runWithCommand("dd", Texts{"x"}), "");
    EXPECT_GE(secondsSince(start), 1.0);
    EXPECT_THAT(log.entries(), IsEmpty());
    EXPECT_EQ(peerClosed.get_future().wait_for(std::chrono::seconds(60)), std::future_status::ready);
}

TEST(RunWithCommand, SaysNothingWhenTheServiceClosesAtOnce) {
    const Outcome outcome = runAgainst(closesAtOnce(), "x");
    EXPECT_THAT(outcome.log, IsEmpty());
    EXPECT_EQ(outcome.leftOpen, 0U);
}

TEST(RunWithCommand, SaysNothingWhenTheServiceClosesWithoutAnAnswer) {
    const Outcome outcome = runAgainst(answers(""), "x");
    EXPECT_THAT(outcome.log, IsEmpty());
    EXPECT_EQ(outcome.leftOpen, 0U);
}

TEST(RunWithCommand, SaysNothingWhenTheServiceResetsInsteadOfAnswering) {
    const Outcome outcome = runAgainst(
        [](LoopbackConnection& connection) {
            connection.receiveRequest();
            connection.resetOnClose();
        },
        "x");
    EXPECT_THAT(outcome.log, IsEmpty());
    EXPECT_EQ(outcome.leftOpen, 0U);
}

// --- requests that can't be written

TEST(RunWithCommandDeathTest, StopsTheProcessWhenATextIsNotUtf8) {
    const LoopbackService service;
    RecordingLog log;
    CommandService client(log, patient(service.port()));
    EXPECT_EXIT(client.runWithCommand("\xff", {}), KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(client.runWithCommand("dd", Texts{"if=\xed\xa0\x80"}), KilledBySignal(SIGABRT), "");
}

TEST(RunWithCommand, ConnectsBeforeItLooksAtTheRequest) {
    const UniqueFd nobodyListens = boundSocket(SOCK_STREAM);
    RecordingLog log;
    EXPECT_EQ(CommandService(log, patient(portOf(nobodyListens.get()))).runWithCommand("\xff", {}), "");
    EXPECT_THAT(log.entries(), ElementsAre(StartsWith("SocketError.unknownError: ")));
}

}  // namespace
}  // namespace kestrav
