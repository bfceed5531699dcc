// The real service in its own process, on the wire, with a simulated accessory.

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <poll.h>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "tests/TemporaryFolder.h"
#include "tests/childrenOf.h"
#include "tests/eventually.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/SimulatedAccessory.h"
#include "tests/services/linesSaying.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using Clock = std::chrono::steady_clock;

constexpr std::size_t mebibyte = std::size_t{1} << 20U;

class Daemon : public testing::Test {
  protected:
    std::vector<std::string> writeOf(const std::string& image, std::uint64_t block = 1536) const {
        return {"if=" + image, "of=/dev/rsdzz", "seek=" + std::to_string(block), "bs=512"};
    }
    std::string nothing() { return ask(daemon_.port(), "umount", {"/dev/sdzzs1"}); }
    /// The answer once the places of peers that have just left are free again.
    std::string nothingOncePlaceIsFree() {
        std::string reply;
        eventually([&] { return (reply = nothing()).find("busy") == std::string::npos; });
        return reply;
    }

    const std::string before_ = patternOf(4 * mebibyte, 7);
    SimulatedAccessory accessory_{before_};
    TemporaryFolder folder_;
    CommandDaemon daemon_;
};

constexpr const char* nothingDone = "sdzz1 was not mounted.";

TEST_F(Daemon, CarriesAnUpdateOutByteForByte) {
    const std::string firmware = patternOf(40000, 3);
    const std::string icon = patternOf(9000, 4);
    EXPECT_EQ(nothing(), nothingDone);
    EXPECT_THAT(ask(daemon_.port(), "dd", writeOf(folder_.file("a.fds", firmware))),
                StartsWith("Wrote 40000 bytes to sdzz at block 1536, verified, "));
    EXPECT_THAT(ask(daemon_.port(), "dd", writeOf(folder_.file("a.fif", icon), 2048)),
                StartsWith("Wrote 9000 bytes to sdzz at block 2048, verified, "));
    std::string expected = before_;
    expected.replace(1536 * 512, firmware.size(), firmware).replace(2048 * 512, icon.size(), icon);
    EXPECT_TRUE(accessory_.diskBytes() == expected);
}

TEST_F(Daemon, AnswersAReadWithTheBlocksInOnePiece) {
    const std::string blocks = ask(daemon_.port(), "dd", {"if=/dev/rsdzz", "skip=1536", "count=19"});
    EXPECT_TRUE(blocks == before_.substr(1536 * 512, 19 * 512));
}

TEST_F(Daemon, LogsWhoAskedWhatAndWhatCameOfIt) {
    nothing();
    const std::string user = std::to_string(::geteuid());
    EXPECT_THAT(daemon_.log(),
                HasSubstr("kestrav-commandd: user " + user + ": umount /dev/sdzzs1: sdzz1 was not mounted.\n"));
}

TEST_F(Daemon, TakesARequestInPieces) {
    const Client client(daemon_.port());
    for (const char byte : requestFor("umount", {"/dev/sdzzs1"})) {
        ASSERT_TRUE(client.send(std::string_view(&byte, 1)));
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_EQ(client.readOnce(), nothingDone);
}

TEST_F(Daemon, BeginsNothingForAPeerThatHasEndedItsSending) {
    daemon_.signal(SIGSTOP);
    const Client client(daemon_.port());
    client.send(requestFor("dd", writeOf(folder_.file("image", "x"))));
    client.finishSending();
    daemon_.signal(SIGCONT);
    EXPECT_EQ(client.readOnce(),
              "Refused: the connection was closed before the request was begun; nothing was done. Keep it open until "
              "the answer is there.");
    EXPECT_EQ(linesSaying(daemon_.log(), "gone before the request was begun; nothing was done"), 1U) << daemon_.log();
    EXPECT_TRUE(accessory_.diskBytes() == before_);
}

TEST_F(Daemon, TakesALineEndBehindTheRequest) {
    const Client client(daemon_.port());
    client.send(requestFor("umount", {"/dev/sdzzs1"}) + "\r\n");
    EXPECT_EQ(client.readOnce(), nothingDone);
}

struct BadBytesRow {
    std::string name;
    std::string bytes;
    std::string said;

    friend void PrintTo(const BadBytesRow& row, std::ostream* out) { *out << row.name; }
};

class BadBytes : public Daemon, public testing::WithParamInterface<BadBytesRow> {};

TEST_P(BadBytes, AreRefusedInWords) {
    const Client client(daemon_.port());
    client.send(GetParam().bytes);
    EXPECT_THAT(client.readOnce(), StartsWith("Refused: " + GetParam().said));
    EXPECT_EQ(client.readOnce(), "");  // and the connection is closed
    EXPECT_EQ(linesSaying(daemon_.log(), "Refused: " + GetParam().said), 1U) << daemon_.log();
    EXPECT_EQ(linesSaying(daemon_.log(), "Refused: "), 1U) << daemon_.log();
    EXPECT_EQ(nothing(), nothingDone);
    EXPECT_TRUE(accessory_.diskBytes() == before_);
}

std::string nestedLists(std::size_t depth) {
    return R"({"command":"dd","arguments":)" + std::string(depth, '[') + std::string(depth, ']') + "}";
}

INSTANTIATE_TEST_SUITE_P(
    Rows, BadBytes,
    testing::Values(BadBytesRow{"BrowsersPost", "POST / HTTP/1.1\r\nHost: 127.0.0.1:9090\r\n\r\n{}",
                                "a request is a JSON object"},
                    BadBytesRow{"Zero", std::string(1, '\0'), "a request is a JSON object"},
                    BadBytesRow{"NestedLists", nestedLists(1000), "the request is not JSON"},
                    BadBytesRow{"FewNestedLists", nestedLists(2), "a request has exactly the members"},
                    BadBytesRow{"OpenLists", "{\"a\":" + std::string(65536, '['), "the request is longer than 64 KiB"},
                    BadBytesRow{"OpenText", "{\"" + std::string(65535, 'x'), "the request is longer than 64 KiB"},
                    BadBytesRow{"LongestText", "{\"" + std::string(65532, 'x') + "\"}", "the request is not JSON"},
                    BadBytesRow{"TwoRequests", "{}{}", "there is more behind the request"},
                    BadBytesRow{"BehindTheLineEnd", "{}\r\n{", "there is more behind the request"},
                    BadBytesRow{"CommandTwice", R"({"command":"rm","command":"umount","arguments":["/dev/sdzzs1"]})",
                                "a member comes twice in the request"},
                    BadBytesRow{"ArgumentsTwice", R"({"arguments":["\\\",{"],"command":"rm","arguments":[]})",
                                "a member comes twice in the request"},
                    BadBytesRow{"CommandTwiceInOtherWords", R"({"command":"rm","\u0063ommand":"rm","arguments":[]})",
                                "a member comes twice in the request"},
                    BadBytesRow{"NoMembers", "{}", "a request has exactly the members"},
                    BadBytesRow{"PercentSigns", requestFor("%n%n%s%s", {}), "\"%n%n%s%s\" is not a command"}),
    [](const auto& row) { return row.param.name; });

TEST_F(Daemon, RefusesAPeerThatStopsInMidRequest) {
    const Client client(daemon_.port());
    client.send("{\"command\":");
    client.finishSending();
    EXPECT_EQ(client.readOnce(), "Refused: the connection was closed before the request was complete.");
}

TEST_F(Daemon, GivesSilentAndSlowPeersFiveSeconds) {
    const auto start = Clock::now();
    const Client silent(daemon_.port());
    const Client slow(daemon_.port());
    std::thread dripping([&slow] {
        for (int i = 0; i < 40 && slow.send(i == 0 ? "{" : " "); ++i)
            std::this_thread::sleep_for(1s);
    });
    EXPECT_EQ(nothing(), nothingDone);  // nobody else waits for them
    constexpr const char* late = "Refused: the request did not arrive within five seconds.";
    EXPECT_EQ(silent.readOnce(), late);
    EXPECT_EQ(slow.readOnce(), late);
    const auto taken = Clock::now() - start;
    EXPECT_GE(taken, 4900ms);
    EXPECT_LT(taken, 35s);  // not as long as the slow one goes on
    dripping.join();
}

long residentKilobytes(pid_t process, const char* field) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string word; status >> word;) {
        long value = 0;
        if (word == field && status >> value) return value;
    }
    return -1;
}

TEST_F(Daemon, SurvivesAGibibyteOfJunk) {
    const Client client(daemon_.port());
    const std::string junk(mebibyte, 'x');
    ASSERT_TRUE(client.send("{\""));
    std::size_t sent = 0;
    while (sent < 1024 && client.send(junk))
        ++sent;
    EXPECT_EQ(nothing(), nothingDone);
    EXPECT_THAT(daemon_.log(), HasSubstr("the request is longer than 64 KiB"));
    EXPECT_LT(residentKilobytes(daemon_.pid(), "VmHWM:"), 24 * 1024);
}

TEST_F(Daemon, ServesSixtyFourPeersAndTellsTheNextToComeBack) {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    std::vector<std::unique_ptr<Client>> peers;
    for (int i = 0; i < 500; ++i)
        peers.push_back(std::make_unique<Client>(daemon_.port()));
    int served = 0;
    int toldToComeBack = 0;
    for (const auto& peer : peers)
        peer->send(requestFor("umount", {"/dev/sdzzs1"}));
    for (const auto& peer : peers) {
        const std::string reply = peer->readOnce();
        served += reply == nothingDone ? 1 : 0;
        toldToComeBack += reply == "Refused: the service is busy; try again in a moment." ? 1 : 0;
    }
    EXPECT_GE(served, 64);
    EXPECT_EQ(served + toldToComeBack, 500);
    peers.clear();
    EXPECT_EQ(nothingOncePlaceIsFree(), nothingDone);
}

TEST_F(Daemon, HasPlaceAgainOnceSilentPeersAreGone) {
    std::vector<std::unique_ptr<Client>> peers;
    for (int i = 0; i < 64; ++i)
        peers.push_back(std::make_unique<Client>(daemon_.port()));
    EXPECT_EQ(nothing(), "Refused: the service is busy; try again in a moment.");
    peers.clear();
    EXPECT_EQ(nothingOncePlaceIsFree(), nothingDone);
}

TEST_F(Daemon, KeepsNothingOpenAfterManyRequests) {
    const auto openFiles = [this](bool withSockets) {
        const std::filesystem::path list = "/proc/" + std::to_string(daemon_.pid()) + "/fd";
        return std::count_if(std::filesystem::directory_iterator(list), {}, [withSockets](const auto& file) {
            std::error_code gone;
            return withSockets || !std::filesystem::read_symlink(file, gone).native().starts_with("socket:");
        });
    };
    // Of its sockets the listener alone stays: the connection that found the service listening may still be open.
    const auto before = openFiles(false) + 1;
    for (int i = 0; i < 50; ++i)
        ASSERT_EQ(nothing(), nothingDone);
    EXPECT_TRUE(eventually([&] { return openFiles(true) == before; })) << openFiles(true) << " instead of " << before;
    EXPECT_TRUE(eventually([this] { return childrenOf(daemon_.pid()).empty(); }));
}

TEST_F(Daemon, RefusesAnotherUserWithoutConsent) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: connects as another user";
    // The image is one that the other user may read: it is consent that is missing.
    std::filesystem::permissions(folder_.path(), std::filesystem::perms(0755));
    const std::string request = requestFor("dd", writeOf(folder_.file("image", "x")));
    const pid_t stranger = ::fork();
    if (stranger == 0) {
        if (::setresuid(65534, 65534, 65534) != 0) ::_exit(2);
        const Client client(daemon_.port());
        client.send(request);
        // What polkit says, or that it can't be asked, depends on the machine; consent it is not.
        ::_exit(client.readOnce().starts_with("Refused: ") ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(stranger, &status, 0), stranger);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(accessory_.diskBytes() == before_);
    const std::string asked =
        "user 65534: dd if=" + folder_.path().string() + "/image of=/dev/rsdzz seek=1536 bs=512: ";
    EXPECT_EQ(linesSaying(daemon_.log(), asked + "Refused: "), 1U) << daemon_.log();
    EXPECT_EQ(linesSaying(daemon_.log(), asked + "Refused: the image"), 0U) << daemon_.log();
}

TEST_F(Daemon, DoesNothingForAPeerThatHasGone) {
    daemon_.signal(SIGSTOP);
    for (int i = 0; i < 10; ++i) {
        const Client client(daemon_.port());
        client.send(requestFor("dd", writeOf(folder_.file("image", "x"))));
    }
    daemon_.signal(SIGCONT);
    EXPECT_EQ(nothing(), nothingDone);
    EXPECT_THAT(daemon_.log(), Not(AnyOf(HasSubstr("who is asking"), HasSubstr("dd if="))));
    EXPECT_TRUE(accessory_.diskBytes() == before_);
}

TEST_F(Daemon, StopsAtOnceWhenThereIsNothingToDo) {
    const Client waiting(daemon_.port());
    waiting.send("{");
    // An answer to somebody who came later: the connection was taken by then.
    EXPECT_EQ(nothing(), nothingDone);
    daemon_.signal(SIGTERM);
    EXPECT_EQ(waiting.readOnce(), "Refused: the service is being stopped.");
    EXPECT_EQ(daemon_.waitForEnd(), 0);
}

TEST_F(Daemon, StopsOnInterruptToo) {
    daemon_.signal(SIGINT);
    EXPECT_EQ(daemon_.waitForEnd(), 0);
}

}  // namespace
}  // namespace kestrav
