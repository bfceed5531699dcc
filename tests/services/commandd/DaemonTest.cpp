// The real service in its own process, on the wire, with a simulated accessory.

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <poll.h>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "tests/services/CommandDaemon.h"
#include "tests/services/SimulatedAccessory.h"
#include "tests/services/TemporaryFolder.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::StartsWith;
using Clock = std::chrono::steady_clock;

constexpr std::size_t mebibyte = std::size_t{1} << 20U;

class Daemon : public testing::Test {
  protected:
    std::vector<std::string> writeOf(const std::string& image, std::uint64_t block = 1536) const {
        return {"if=" + image, "of=/dev/rsdzz", "seek=" + std::to_string(block), "bs=512"};
    }
    std::string nothing() { return ask(daemon_.port(), "umount", {"/dev/sdzzs1"}); }

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

TEST_F(Daemon, ServesAPeerThatHasEndedItsSending) {
    const Client client(daemon_.port());
    client.send(requestFor("umount", {"/dev/sdzzs1"}));
    client.finishSending();
    EXPECT_EQ(client.readOnce(), nothingDone);
}

struct BadBytesRow {
    std::string name;
    std::string bytes;
    std::string said;
};

class BadBytes : public Daemon, public testing::WithParamInterface<BadBytesRow> {};

TEST_P(BadBytes, AreRefusedInWords) {
    const Client client(daemon_.port());
    client.send(GetParam().bytes);
    EXPECT_THAT(client.readOnce(), StartsWith("Refused: " + GetParam().said));
    EXPECT_EQ(client.readOnce(), "");  // and the connection is closed
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
                    BadBytesRow{"LineEnd", "{}\r\n", "there is more behind the request"},
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
        for (int i = 0; i < 8 && slow.send(i == 0 ? "{" : " "); ++i)
            std::this_thread::sleep_for(1s);
    });
    EXPECT_EQ(nothing(), nothingDone);  // nobody else waits for them
    constexpr const char* late = "Refused: the request did not arrive within five seconds.";
    EXPECT_EQ(silent.readOnce(), late);
    EXPECT_EQ(slow.readOnce(), late);
    const auto taken = Clock::now() - start;
    EXPECT_GE(taken, 4900ms);
    EXPECT_LT(taken, 8s);
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
    EXPECT_EQ(nothing(), nothingDone);
}

TEST_F(Daemon, HasPlaceAgainOnceSilentPeersAreGone) {
    std::vector<std::unique_ptr<Client>> peers;
    for (int i = 0; i < 64; ++i)
        peers.push_back(std::make_unique<Client>(daemon_.port()));
    EXPECT_EQ(nothing(), "Refused: the service is busy; try again in a moment.");
    peers.clear();
    for (int i = 0; i < 100 && nothing() != nothingDone; ++i)
        std::this_thread::sleep_for(20ms);
    EXPECT_EQ(nothing(), nothingDone);
}

TEST_F(Daemon, KeepsNothingOpenAfterManyRequests) {
    const auto openFiles = [this] {
        const std::filesystem::path list = "/proc/" + std::to_string(daemon_.pid()) + "/fd";
        return std::distance(std::filesystem::directory_iterator(list), {});
    };
    const auto before = openFiles();
    for (int i = 0; i < 50; ++i)
        ASSERT_EQ(nothing(), nothingDone);
    for (int i = 0; i < 100 && (openFiles() != before || !daemon_.children().empty()); ++i) {
        std::this_thread::sleep_for(50ms);
    }
    EXPECT_EQ(openFiles(), before);
    EXPECT_TRUE(daemon_.children().empty());
}

TEST_F(Daemon, RefusesAnotherUserWithoutConsent) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: connects as another user";
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
    EXPECT_THAT(daemon_.log(), HasSubstr("user 65534: Refused: "));
}

TEST_F(Daemon, DoesNothingForAPeerThatHasGone) {
    daemon_.signal(SIGSTOP);
    for (int i = 0; i < 10; ++i) {
        const Client client(daemon_.port());
        client.send(requestFor("dd", writeOf(folder_.file("image", "x"))));
    }
    daemon_.signal(SIGCONT);
    EXPECT_EQ(nothing(), nothingDone);
    EXPECT_THAT(daemon_.log(), HasSubstr("the system does not tell who is asking"));
    EXPECT_TRUE(accessory_.diskBytes() == before_);
}

TEST_F(Daemon, StopsAtOnceWhenThereIsNothingToDo) {
    const Client waiting(daemon_.port());
    waiting.send("{");
    std::this_thread::sleep_for(50ms);
    daemon_.signal(SIGTERM);
    EXPECT_EQ(waiting.readOnce(), "Refused: the service is being stopped.");
    EXPECT_EQ(daemon_.waitForEnd(), 0);
}

TEST_F(Daemon, StopsOnInterruptToo) {
    daemon_.signal(SIGINT);
    EXPECT_EQ(daemon_.waitForEnd(), 0);
}

/// A write that takes a while: the process that does it is found and can be held.
class DaemonInMidWrite : public testing::Test {
  protected:
    static constexpr std::size_t imageSize = 160 * mebibyte;

    void SetUp() override {
        std::string bytes;
        while (bytes.size() < imageSize)
            bytes += patternOf(mebibyte, 3);
        image_ = folder_.file("image", bytes);
        std::filesystem::resize_file(accessory_.nodes() / "sdzz", diskSize);
        disk_.reset(::open((accessory_.nodes() / "sdzz").c_str(), O_RDONLY | O_CLOEXEC));
        ASSERT_TRUE(disk_);
    }

    char diskByte(std::size_t at) const {
        char byte = 0;
        return ::pread(disk_.get(), &byte, 1, static_cast<off_t>(at)) == 1 ? byte : '?';
    }
    bool isAtEnd() const { return diskByte(imageEnd - 1) != 0; }

    /// Sends the request and holds the process that carries it out, once it has written something.
    pid_t holdInMidWrite(const CommandDaemon& daemon, const Client& client) {
        client.send(requestFor("dd", {"if=" + image_, "of=/dev/rsdzz", "seek=1536", "bs=512"}));
        const pid_t writer = daemon.waitForChild();
        while (diskByte(1536 * 512 + 1) == 0)
            std::this_thread::yield();
        ::kill(writer, SIGSTOP);
        return writer;
    }

    static constexpr std::size_t imageEnd = 1536 * 512 + imageSize;
    static constexpr std::size_t diskSize = 200 * mebibyte;
    TemporaryFolder folder_;
    SimulatedAccessory accessory_{"", {{"size=0", "size=" + std::to_string(diskSize / 512)}}};
    std::string image_;
    UniqueFd disk_;
};

TEST_F(DaemonInMidWrite, EndsTheWriteAndAnswersBeforeItStops) {
    CommandDaemon daemon;
    const Client client(daemon.port());
    const pid_t writer = holdInMidWrite(daemon, client);
    ASSERT_FALSE(isAtEnd());
    daemon.signal(SIGTERM);
    ::kill(writer, SIGTERM);  // as a service manager does: to all of its processes
    std::this_thread::sleep_for(200ms);
    EXPECT_TRUE(daemon.runs());
    EXPECT_THROW(Client{daemon.port()}, std::runtime_error);  // nobody new is taken
    ::kill(writer, SIGCONT);
    EXPECT_THAT(client.readOnce(60), StartsWith("Wrote " + std::to_string(imageSize) + " bytes"));
    EXPECT_EQ(daemon.waitForEnd(), 0);
}

TEST_F(DaemonInMidWrite, LeavesTheDiskToTheNextUpdateWhenItIsKilled) {
    {
        CommandDaemon daemon;
        const Client client(daemon.port());
        const pid_t writer = holdInMidWrite(daemon, client);
        ASSERT_FALSE(isAtEnd());
        daemon.signal(SIGKILL);
        EXPECT_EQ(daemon.waitForEnd(), 128 + SIGKILL);
        EXPECT_EQ(client.readOnce(), "");
        for (int i = 0; i < 500 && ::kill(writer, 0) == 0; ++i)
            std::this_thread::sleep_for(10ms);
        EXPECT_NE(::kill(writer, 0), 0);
        EXPECT_FALSE(isAtEnd());
    }
    const CommandDaemon next;
    EXPECT_THAT(ask(next.port(), "dd", {"if=" + folder_.file("small", "x"), "of=/dev/rsdzz", "seek=1536", "bs=512"}),
                StartsWith("Wrote 1 bytes"));
}

TEST_F(DaemonInMidWrite, RefusesASecondUpdateOfTheDiskAndServesOthers) {
    const CommandDaemon daemon;
    const Client client(daemon.port());
    const pid_t writer = holdInMidWrite(daemon, client);
    EXPECT_EQ(ask(daemon.port(), "umount", {"/dev/sdzzs1"}), nothingDone);
    const std::string small = folder_.file("small", "x");
    EXPECT_THAT(ask(daemon.port(), "dd", {"if=" + small, "of=/dev/rsdzz", "seek=2048", "bs=512"}),
                StartsWith("Refused: the disk sdzz is in use by "));
    EXPECT_THAT(ask(daemon.port(), "dd", {"if=/dev/rsdzz", "skip=1536", "count=1"}),
                StartsWith("Refused: the disk sdzz is in use by "));
    ::kill(writer, SIGCONT);
    EXPECT_THAT(client.readOnce(60), StartsWith("Wrote " + std::to_string(imageSize)));
}

TEST_F(DaemonInMidWrite, FinishesTheWriteWhenThePeerGoes) {
    const CommandDaemon daemon;
    {
        const Client client(daemon.port());
        const pid_t writer = holdInMidWrite(daemon, client);
        ::kill(writer, SIGCONT);
    }
    for (int i = 0; i < 6000 && !daemon.children().empty(); ++i)
        std::this_thread::sleep_for(10ms);
    EXPECT_THAT(daemon.log(), HasSubstr(": Wrote " + std::to_string(imageSize) + " bytes"));
}

TEST_F(DaemonInMidWrite, AnswersForAProcessThatDied) {
    const CommandDaemon daemon;
    const Client client(daemon.port());
    ::kill(holdInMidWrite(daemon, client), SIGKILL);
    EXPECT_EQ(client.readOnce(),
              "Failed: the request's process ended before it was done. If it was a write, repeat it.");
}

TEST(DaemonWithoutDescriptors, WaitsInsteadOfSpinning) {
    CommandDaemon daemon({.handed = std::nullopt, .descriptors = 8, .uid = std::nullopt});
    std::vector<std::unique_ptr<Client>> peers;
    for (int i = 0; i < 20; ++i)
        peers.push_back(std::make_unique<Client>(daemon.port()));
    const auto ticks = [&daemon] {
        std::ifstream stat("/proc/" + std::to_string(daemon.pid()) + "/stat");
        std::string word;
        for (int i = 0; i < 13; ++i)
            stat >> word;
        long user = 0;
        long system = 0;
        stat >> user >> system;
        return user + system;
    };
    const long before = ticks();
    std::this_thread::sleep_for(1s);
    EXPECT_LT(ticks() - before, ::sysconf(_SC_CLK_TCK) / 5);
    peers.clear();
    EXPECT_TRUE(daemon.runs());
    std::string reply;
    for (int i = 0; i < 100 && reply.empty(); ++i)
        reply = ask(daemon.port(), "rm", {});
    EXPECT_THAT(reply, StartsWith("Refused: "));
}

TEST(DaemonOfAUser, ServesThatUserAndRoot) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: runs as another user";
    const CommandDaemon daemon({.handed = std::nullopt, .descriptors = std::nullopt, .uid = 65534});
    EXPECT_THAT(ask(daemon.port(), "rm", {}), HasSubstr("is not a command"));
    for (const auto& [uid, expected] : {std::pair{65534U, "is not a command"}, {65533U, "may not write"}}) {
        const pid_t other = ::fork();
        if (other == 0) {
            if (::setresuid(uid, uid, uid) != 0) ::_exit(2);
            ::_exit(ask(daemon.port(), "rm", {}).find(expected) != std::string::npos ? 0 : 1);
        }
        int status = -1;
        ASSERT_EQ(::waitpid(other, &status, 0), other);
        EXPECT_EQ(status, 0) << uid;
    }
}

TEST(DaemonStart, RefusesAHandedSocketThatIsNotAListenerOnLoopback) {
    const UniqueFd datagrams(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const UniqueFd idle(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const UniqueFd everywhere(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::listen(everywhere.get(), 1), 0);  // unbound: every address of the machine
    for (const int socket : {datagrams.get(), idle.get(), everywhere.get()}) {
        CommandDaemon daemon({.handed = socket, .descriptors = std::nullopt, .uid = std::nullopt});
        EXPECT_EQ(daemon.waitForEnd(), 1);
        EXPECT_THAT(daemon.log(), HasSubstr("does not listen for TCP on a loopback address"));
    }
}

}  // namespace
}  // namespace kestrav
