#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "base/UniqueFd.h"
#include "command/CommandService.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/LoopbackService.h"

namespace kestrav {
namespace {

using ::testing::ElementsAre;
using ::testing::SizeIs;
using ::testing::StartsWith;

TEST(CommandEndpoint, HasTheValuesOfTheLocalService) {
    const CommandEndpoint endpoint;
    EXPECT_EQ(endpoint.address, "127.0.0.1");
    EXPECT_EQ(endpoint.port, 9090);
    EXPECT_EQ(endpoint.connectSeconds, 10);
    EXPECT_EQ(endpoint.readLength, 10240);
    EXPECT_EQ(endpoint.readSeconds, 60);
}

/// Gives this process a loopback interface of its own where that is allowed, so that a command service of the machine
/// is not in the way. Elsewhere the machine's port 9090 is used.
void leaveTheMachinesNetwork() {
    if (::unshare(CLONE_NEWNET) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) return;
    const UniqueFd any(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    ifreq loopback{};
    loopback.ifr_name[0] = 'l';
    loopback.ifr_name[1] = 'o';
    loopback.ifr_flags = IFF_UP | IFF_RUNNING;
    ASSERT_EQ(::ioctl(any.get(), SIOCSIFFLAGS, &loopback), 0);
}

TEST(CommandService, TalksToPort9090OfThisMachine) {
    leaveTheMachinesNetwork();
    const LoopbackService service(answers("done"), 9090);
    RecordingLog log;
    CommandService(log).runWithCommand("umount", std::vector<std::string>{"/dev/sdzs1"});
    EXPECT_THAT(log.entries(), ElementsAre("done"));
    EXPECT_THAT(service.requests(), SizeIs(1));
}

TEST(CommandService, IsRefusedAtOnceWhenNobodyListensOnPort9090) {
    leaveTheMachinesNetwork();
    { const LoopbackService free(answers(""), 9090); }
    RecordingLog log;
    EXPECT_EQ(CommandService(log).runWithCommand("umount", {}), "");
    EXPECT_THAT(log.entries(), ElementsAre(StartsWith("SocketError.unknownError: ")));
}

}  // namespace
}  // namespace kestrav
