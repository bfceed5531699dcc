// Requests of another user, and what becomes of the connection while consent is asked for. Needs root.

#include <array>
#include <csignal>
#include <cstdint>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "services/asker/SocketAsker.h"
#include "tests/services/CommandDaemon.h"
#include "tests/services/gate/GateWithoutDisks.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

constexpr uid_t kStranger = 65534;

/// A process of another user's with a connection, which it passes on to a child when it is told to.
class Stranger {
  public:
    enum class Then { stays, leaves };

    Stranger(std::uint16_t port, Then then) {
        std::array<int, 2> down{};
        std::array<int, 2> up{};
        if (::pipe2(down.data(), O_CLOEXEC) != 0 || ::pipe2(up.data(), O_CLOEXEC) != 0)
            throw std::runtime_error("pipe");
        go_.reset(down[1]);
        done_.reset(up[0]);
        const UniqueFd go(down[0]);
        const UniqueFd done(up[1]);
        pid_ = ::fork();
        if (pid_ == 0) run(port, then, go.get(), done.get());
        wait();
    }
    ~Stranger() {
        go_.reset();
        // A negative number would mean every process there is.
        if (heir_ > 0) signalOne(heir_, SIGKILL);
        if (pid_ > 0) signalOne(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    Stranger(const Stranger&) = delete;
    Stranger& operator=(const Stranger&) = delete;

    pid_t pid() const { return pid_; }

    /// Returns when the child has the connection, too or alone.
    void passOn(Then then) {
        if (::write(go_.get(), "!", 1) != 1) throw std::runtime_error("the stranger is gone");
        heir_ = wait();
        // Its end is over once it can be collected; it stays uncollected, so that its number can't be another's.
        siginfo_t info{};
        if (then == Then::leaves) ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOWAIT);
    }

  private:
    [[noreturn]] static void run(std::uint16_t port, Then then, int go, int done) {
        if (::setresuid(kStranger, kStranger, kStranger) != 0) ::_exit(2);
        const Client client(port);
        tell(done, ::getpid());
        char byte = 0;
        if (::read(go, &byte, 1) != 1) ::_exit(0);
        const pid_t heir = ::fork();
        if (heir == 0) {
            tell(done, ::getpid());
            while (::read(go, &byte, 1) > 0) {
            }
            ::_exit(0);
        }
        if (then == Then::stays) ::pause();
        ::_exit(0);
    }
    static void tell(int done, pid_t pid) {
        if (::write(done, &pid, sizeof pid) < 0) ::_exit(3);
    }
    pid_t wait() const {
        pid_t pid = -1;
        if (::read(done_.get(), &pid, sizeof pid) != static_cast<ssize_t>(sizeof pid))
            throw std::runtime_error("no stranger");
        return pid;
    }

    UniqueFd go_;
    UniqueFd done_;
    pid_t pid_ = -1;
    pid_t heir_ = -1;
};

class RequestOfAStranger : public GateWithoutDisks {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "needs root: connects as another user";
    }

    /// What comes of a request on whose connection `meanwhile` happens while consent is asked for.
    GateAnswer answerTo(Stranger::Then then, bool passesOn) {
        Stranger peer(port_, then);
        const UniqueFd service(::accept(listener_.get(), nullptr, nullptr));
        const auto identity = peerIdentity(service.get());
        if (!identity) return {GateAnswer::Kind::notBegun, "no identity"};
        if (passesOn) consent_.meanwhile = [&] { peer.passOn(then); };
        SocketAsker asker(service.get(), identity.value());
        const GateAnswer answer = unmount(asker);
        EXPECT_EQ(consent_.askedAbout.size(), 1U);
        const auto& about = std::get<AskingProcess>(consent_.askedAbout.at(0));
        EXPECT_EQ(about.pid, peer.pid());
        EXPECT_EQ(about.uid, kStranger);
        return answer;
    }
    void expectDenial(const GateAnswer& answer, const std::string& text) {
        EXPECT_EQ(answer.kind, GateAnswer::Kind::denied);
        EXPECT_EQ(answer.text, text);
        EXPECT_TRUE(log_.entries().empty());
    }

    std::uint16_t port_ = 0;
    const UniqueFd listener_ = listenOnFreePort(port_);
};

TEST_F(RequestOfAStranger, IsCarriedOutWithConsent) {
    // Which is as far as the gate, where this computer has no such disk.
    EXPECT_EQ(answerTo(Stranger::Then::stays, false).kind, GateAnswer::Kind::answered);
    ASSERT_EQ(log_.entries().size(), 1U);
    EXPECT_NE(log_.entries().front().find("user 65534: umount /dev/sdzzs1: "), std::string::npos);
}

TEST_F(RequestOfAStranger, IsRefusedWithoutConsent) {
    consent_.problem = refused("no.");
    expectDenial(answerTo(Stranger::Then::stays, false), "Refused: no.");
}

TEST_F(RequestOfAStranger, IsRefusedWhenTheConnectionIsSharedMeanwhile) {
    expectDenial(answerTo(Stranger::Then::stays, true),
                 "Refused: several processes share the connection, so nobody can tell who asks.");
}

TEST_F(RequestOfAStranger, IsRefusedWhenTheConnectionPassedToAnotherProcessMeanwhile) {
    expectDenial(answerTo(Stranger::Then::leaves, true), "Refused: the connection passed to another process.");
}

}  // namespace
}  // namespace kestrav
