// A hundred thousand exchanges with the command service over TCP, a tenth of them with peers that mean it ill.

#include <array>
#include <gtest/gtest.h>
#include <list>
#include <string>
#include <sys/fsuid.h>
#include <sys/socket.h>
#include <unistd.h>

#include "tests/TemporaryFolder.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/SimulatedAccessory.h"
#include "tests/services/soak/Footprint.h"

namespace kestrav {
namespace {

constexpr std::size_t kExchanges = 100'000;
constexpr unsigned kProcesses = 4;
constexpr std::size_t kSilentPeers = 4;  // of each process, open at once

const std::string kUnmount = requestFor("umount", {"/dev/sdzzs1"});

/// A program that means the service ill, or doesn't know better; each call is another way.
class HostilePeer {
  public:
    explicit HostilePeer(std::uint16_t port) : port_(port) {}

    void attack() {
        using Way = void (HostilePeer::*)();
        static constexpr std::array kWays{&HostilePeer::leave,       &HostilePeer::leaveInMidRequest,
                                          &HostilePeer::closeHalf,   &HostilePeer::browse,
                                          &HostilePeer::sendTooMuch, &HostilePeer::sayTwice,
                                          &HostilePeer::nest,        &HostilePeer::askAndLeave,
                                          &HostilePeer::askAndClose, &HostilePeer::askAsSomebodyElse,
                                          &HostilePeer::reset,       &HostilePeer::keepSilent};
        const Way way = kWays.at(next_++ % kWays.size());
        (this->*way)();
    }

  private:
    void exchange(const std::string& bytes) const {
        const Client client(port_);
        client.send(bytes);
        client.readOnce();
    }

    void leave() { const Client client(port_); }
    void leaveInMidRequest() { Client(port_).send(kUnmount.substr(0, 20)); }
    void closeHalf() {
        const Client client(port_);
        client.send(kUnmount.substr(0, 20));
        client.finishSending();
        client.readOnce();
    }
    void browse() { exchange("GET / HTTP/1.1\r\nHost: localhost\r\n\r\n"); }
    void sendTooMuch() { exchange("{\"command\":\"" + std::string(70'000, 'a')); }
    void sayTwice() { exchange(R"({"command":"umount","command":"dd","arguments":[]})"); }
    void nest() { exchange("{\"command\":" + std::string(30'000, '[') + std::string(30'000, ']') + "}"); }
    void askAndLeave() { Client(port_).send(kUnmount); }
    void askAndClose() {
        const Client client(port_);
        client.send(kUnmount);
        client.finishSending();
        client.readOnce();
    }
    void askAsSomebodyElse() {
        ::setfsuid(65534);  // whose the socket is
        {
            const Client client(port_);
            client.send(kUnmount);
            client.readOnce();
        }
        ::setfsuid(0);
    }
    void reset() {
        const Client client(port_);
        client.send(kUnmount.substr(0, 20));
        const linger atOnce{1, 0};
        ::setsockopt(client.socket(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    }
    void keepSilent() {
        silent_.emplace_back(port_);
        if (silent_.size() > kSilentPeers) silent_.pop_front();
    }

    std::uint16_t port_;
    std::size_t next_ = 0;
    std::list<Client> silent_;
};

class TcpSoak : public testing::Test {
  protected:
    /// One exchange of somebody who behaves. Whether the answer is the right one; a wrong one is told.
    /// One process alone opens the disk: of two at once one is refused where the other takes long.
    bool isServed(std::size_t number, bool mayOpenDisk) const {
        if (mayOpenDisk && number % 50 == 1) {
            const std::string answer =
                ask(daemon_.port(), "dd", {"if=" + image_, "of=/dev/rsdzz", "seek=1536", "bs=512"});
            return isRight(answer.starts_with("Wrote 40000 bytes to sdzz at block 1536, verified, "), answer);
        }
        if (mayOpenDisk && number % 5 == 2) {
            const std::string blocks = ask(daemon_.port(), "dd", {"if=/dev/rsdzz", "skip=3", "count=2"});
            return isRight(blocks == blocks_, blocks);
        }
        const std::string answer = ask(daemon_.port(), "umount", {"/dev/sdzzs1"});
        return isRight(answer == "sdzz1 was not mounted.", answer);
    }

    std::size_t exchange(std::size_t count) const {
        return inProcesses(kProcesses, [this, count](unsigned process) {
            HostilePeer hostile(daemon_.port());
            std::size_t failures = 0;
            for (std::size_t i = 0; i < count / kProcesses; ++i) {
                if (i % 10 == 0) {
                    hostile.attack();
                } else if (!isServed(i, process == 0)) {
                    ++failures;
                }
            }
            return failures;
        });
    }

    const std::string before_ = patternOf(std::size_t{4} << 20U, 7);
    const std::string blocks_ = before_.substr(std::size_t{3} * 512, std::size_t{2} * 512);
    SimulatedAccessory accessory_{before_};
    const TemporaryFolder folder_;
    const std::string image_ = folder_.file("image.fds", patternOf(40'000, 3));
    CommandDaemon daemon_;
};

TEST_F(TcpSoak, LeavesTheServiceAsItWas) {
    const Soak result = soak("TCP", daemon_.pid(), kExchanges, [this](std::size_t count) { return exchange(count); });
    EXPECT_EQ(result.failures, 0U) << "exchanges that went wrong";
    EXPECT_TRUE(daemon_.runs());
    EXPECT_EQ(result.atEnd.descriptors, result.atStart.descriptors);
    EXPECT_EQ(result.atEnd.children, 0U);
    EXPECT_LE(result.later, result.grown) << "KiB";
}

}  // namespace
}  // namespace kestrav
