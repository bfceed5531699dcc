// Root's processes that could not do themselves what they ask for. Needs root.

#include <fcntl.h>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <sched.h>
#include <string>
#include <sys/fsuid.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

#include "services/asker/SocketAsker.h"
#include "services/asker/couldDoItself.h"
#include "tests/services/asker/Connector.h"
#include "tests/services/asker/dropCapabilities.h"
#include "tests/services/gate/GateWithoutDisks.h"

namespace kestrav {
namespace {

void insist(bool done) {
    if (!done) ::_exit(9);
}

void confineAFolder() {
    insist(::chroot("/tmp") == 0);
}

void takeOwnMounts() {
    insist(::unshare(CLONE_NEWNS) == 0);
}

/// Root's number, and every capability, in a user namespace of its own.
void takeOwnUsers() {
    insist(::unshare(CLONE_NEWUSER) == 0);
    const int map = ::open("/proc/self/uid_map", O_WRONLY | O_CLOEXEC);
    insist(::write(map, "0 0 1", 5) == 5);
    ::close(map);
}

void becomeSomebodyElse() {
    insist(::setresuid(65534, 65534, 65534) == 0);
}

void becomeSomebodyElseForFiles() {
    ::setfsuid(65534);
}

/// The rights of a thread are its own for the kernel.
void letAThreadGiveUpItsRights() {
    std::promise<void> done;
    std::thread([&done] {
        dropCapabilities();
        done.set_value();
        ::pause();
    }).detach();
    done.get_future().wait();
}

struct Confinement {
    const char* name;
    void (*confine)();
    const char* sentence;
};

constexpr const char* kOtherRights = "the process behind the connection runs with other rights than its user's.";
constexpr const char* kOtherFolders = "the process that asks sees other folders than the service does.";
constexpr const char* kGivenUp =
    "the process that asks has given up the rights that this takes, or was started without them.";

class RequestOfAConfinedRoot : public GateWithoutDisks, public testing::WithParamInterface<Confinement> {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "needs root";
    }

    GateAnswer answerTo(const std::function<void()>& confine) {
        const Connector peer(port_, 0, [&confine](Client&) { confine(); });
        const UniqueFd service(::accept(listener_.get(), nullptr, nullptr));
        const auto identity = peerIdentity(service.get());
        if (!identity) return {GateAnswer::Kind::notBegun, identity.problem().sentence};
        SocketAsker asker(service.get(), identity.value());
        return unmount(asker);
    }

    std::uint16_t port_ = 0;
    const UniqueFd listener_ = listenOnFreePort(port_);
};

TEST_P(RequestOfAConfinedRoot, IsRefused) {
    const GateAnswer answer = answerTo(GetParam().confine);
    EXPECT_EQ(answer.kind, GateAnswer::Kind::denied);
    EXPECT_EQ(answer.text, std::string("Refused: ") + GetParam().sentence);
    EXPECT_TRUE(log_.entries().empty());
    EXPECT_TRUE(consent_.askedAbout.empty()) << "root is asked about nobody";
}

INSTANTIATE_TEST_SUITE_P(Ways, RequestOfAConfinedRoot,
                         testing::Values(Confinement{"AnotherRootFolder", confineAFolder, kOtherFolders},
                                         Confinement{"MountsOfItsOwn", takeOwnMounts, kOtherFolders},
                                         Confinement{"UsersOfItsOwn", takeOwnUsers, kGivenUp},
                                         Confinement{"NoCapabilities", dropCapabilities, kGivenUp},
                                         Confinement{"NoMounting", [] { dropCapability(CAP_SYS_ADMIN); }, kGivenUp},
                                         Confinement{"NoFilesOfOthers", [] { dropCapability(CAP_DAC_OVERRIDE); },
                                                     kGivenUp},
                                         Confinement{"AnotherUserByNow", becomeSomebodyElse, kOtherRights},
                                         Confinement{"AnotherUserForFiles", becomeSomebodyElseForFiles, kOtherRights}),
                         [](const auto& row) { return row.param.name; });

TEST_F(RequestOfAConfinedRoot, IsServedWhenItIsNotConfined) {
    EXPECT_EQ(answerTo([] {}).kind, GateAnswer::Kind::answered);
}

TEST_F(RequestOfAConfinedRoot, IsServedWithoutTheRightsThatThisDoesNotTake) {
    EXPECT_EQ(answerTo([] { dropCapability(CAP_NET_RAW); }).kind, GateAnswer::Kind::answered);
}

TEST_F(RequestOfAConfinedRoot, IsServedWhenItHasConfinedAThreadAlone) {
    EXPECT_EQ(answerTo(letAThreadGiveUpItsRights).kind, GateAnswer::Kind::answered);
}

TEST(CouldDoItself, IsTrueOfThisProcessWhoeverItIs) {
    const auto could = couldDoItself(::getpid(), ::geteuid());
    EXPECT_TRUE(could) << could.problem().sentence;
}

TEST(CouldDoItself, IsFalseOfAProcessThatIsGone) {
    // No process has a number as large.
    const auto could = couldDoItself(1 << 23, ::geteuid());
    ASSERT_FALSE(could);
    EXPECT_EQ(could.problem().sentence, "the process that asks is gone.");
}

}  // namespace
}  // namespace kestrav
