// How the real service begins and ends, and what becomes of a write meanwhile.

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "tests/TemporaryFolder.h"
#include "tests/childrenOf.h"
#include "tests/eventually.h"
#include "tests/sanitizers.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/SimulatedAccessory.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::size_t mebibyte = std::size_t{1} << 20U;

bool refusesConnections(std::uint16_t port) {
    try {
        const Client peer(port);
        return false;
    } catch (const std::runtime_error&) {
        return true;
    }
}

pid_t childOf(const CommandDaemon& daemon) {
    std::vector<pid_t> children;
    eventually([&] { return !(children = childrenOf(daemon.pid())).empty(); });
    return children.at(0);
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
        const pid_t writer = childOf(daemon);
        while (diskByte(1536 * 512 + 1) == 0)
            std::this_thread::yield();
        signalOne(writer, SIGSTOP);
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
    for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) {
        daemon.signal(number);
        signalOne(writer, number);  // as a service manager and a terminal do: to all of its processes
    }
    EXPECT_TRUE(eventually([&] { return refusesConnections(daemon.port()); })) << "somebody new is taken";
    EXPECT_TRUE(daemon.runs());
    signalOne(writer, SIGCONT);
    EXPECT_THAT(client.readOnce(60), StartsWith("Wrote " + std::to_string(imageSize) + " bytes"));
    EXPECT_EQ(daemon.waitForEnd(), 0);
}

TEST_F(DaemonInMidWrite, TakesNoNoticeOfSignalsWithoutAMeaning) {
    CommandDaemon daemon;
    const Client client(daemon.port());
    const pid_t writer = holdInMidWrite(daemon, client);
    for (const int number : {SIGUSR1, SIGUSR2, SIGALRM, SIGPIPE}) {
        daemon.signal(number);
        signalOne(writer, number);
    }
    signalOne(writer, SIGCONT);
    EXPECT_THAT(client.readOnce(60), StartsWith("Wrote " + std::to_string(imageSize) + " bytes"));
    EXPECT_TRUE(daemon.runs());
}

TEST_F(DaemonInMidWrite, IsOutlivedByTheWriteWhenItIsKilledAndTheNextUpdateComesAfterThat) {
    pid_t writer = -1;
    {
        CommandDaemon daemon;
        const Client client(daemon.port());
        writer = holdInMidWrite(daemon, client);
        ASSERT_FALSE(isAtEnd());
        daemon.signal(SIGKILL);
        EXPECT_EQ(daemon.waitForEnd(), 128 + SIGKILL);
        EXPECT_EQ(::kill(writer, 0), 0);
        EXPECT_FALSE(isAtEnd());
    }
    const CommandDaemon next;
    const std::vector<std::string> small{"if=" + folder_.file("small", "x"), "of=/dev/rsdzz", "seek=1536", "bs=512"};
    EXPECT_THAT(ask(next.port(), "dd", small), StartsWith("Refused: the disk sdzz is in use by "));
    signalOne(writer, SIGCONT);
    std::string answer;
    EXPECT_TRUE(eventually([&] { return (answer = ask(next.port(), "dd", small)).starts_with("Wrote 1 bytes"); }))
        << answer;
    EXPECT_TRUE(isAtEnd()) << "the write did not outlive the service";
}

TEST_F(DaemonInMidWrite, RefusesASecondUpdateOfTheDiskAndServesOthers) {
    const CommandDaemon daemon;
    const Client client(daemon.port());
    const pid_t writer = holdInMidWrite(daemon, client);
    EXPECT_EQ(ask(daemon.port(), "umount", {"/dev/sdzzs1"}), "sdzz1 was not mounted.");
    const std::string small = folder_.file("small", "x");
    EXPECT_THAT(ask(daemon.port(), "dd", {"if=" + small, "of=/dev/rsdzz", "seek=2048", "bs=512"}),
                StartsWith("Refused: the disk sdzz is in use by "));
    EXPECT_THAT(ask(daemon.port(), "dd", {"if=/dev/rsdzz", "skip=1536", "count=1"}),
                StartsWith("Refused: the disk sdzz is in use by "));
    signalOne(writer, SIGCONT);
    EXPECT_THAT(client.readOnce(60), StartsWith("Wrote " + std::to_string(imageSize)));
}

TEST_F(DaemonInMidWrite, FinishesTheWriteWhenThePeerGoes) {
    const CommandDaemon daemon;
    {
        const Client client(daemon.port());
        const pid_t writer = holdInMidWrite(daemon, client);
        signalOne(writer, SIGCONT);
    }
    EXPECT_TRUE(eventually([&] { return childrenOf(daemon.pid()).empty(); }));
    EXPECT_THAT(daemon.log(), HasSubstr(": Wrote " + std::to_string(imageSize) + " bytes"));
}

TEST_F(DaemonInMidWrite, AnswersForAProcessThatDied) {
    const CommandDaemon daemon;
    const Client client(daemon.port());
    const pid_t writer = holdInMidWrite(daemon, client);
    signalOne(writer, SIGKILL);
    EXPECT_EQ(client.readOnce(),
              "Failed: the request's process ended before it was done. If it was a write, repeat it.");
    EXPECT_THAT(daemon.log(), HasSubstr("process " + std::to_string(writer) + " was ended by signal 9 (Killed)\n"));
}

TEST(DaemonWithoutDescriptors, WaitsInsteadOfSpinning) {
    if (!kDescriptorsAreOurs) GTEST_SKIP() << "the checks for undefined behaviour need descriptors themselves";
    CommandDaemon daemon({.handed = std::nullopt, .descriptors = 12, .uid = std::nullopt});
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
    EXPECT_TRUE(daemon.runs()) << daemon.log();
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
