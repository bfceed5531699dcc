// Whom the real polkitd asks.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

#include "services/asker/PolkitConsent.h"
#include "services/asker/ProcessRecord.h"
#include "tests/sandbox/ChildProcess.h"
#include "tests/sandbox/DismissingAgent.h"
#include "tests/sandbox/Sandbox.h"
#include "tests/sandbox/SystemDaemons.h"

namespace kestrav {
namespace {

constexpr uid_t kAdmin = 4711;

class ConsentOfARealPolkit : public testing::Test {
  protected:
    void SetUp() override {
        if (!Sandbox::isPossible()) GTEST_SKIP() << "needs root";
        room_.emplace();
        addAccount("kestrav-admin", kAdmin, true);
        SystemDaemons::addActions("/usr/libexec/kestrav/kestrav-bless");
        daemons_.start();
    }
    static Outcome<void> given(const AskingProcess& process) {
        return PolkitConsent().given(process, Intent{}, true, [] { return true; });
    }

    std::optional<Sandbox> room_;
    SystemDaemons daemons_;
};

TEST_F(ConsentOfARealPolkit, IsNotAskedOfWhomeverHasTheProcessesNumberByNow) {
    const UserProcess user(kAdmin, [] { return ""; });
    const DismissingAgent agent(user.pid(), kAdmin);
    const AskingProcess now{user.pid(), ProcessRecord(user.pid()).startTime().value(), kAdmin};
    AskingProcess earlier = now;
    --earlier.startTime;
    EXPECT_FALSE(given(earlier));
    EXPECT_FALSE(agent.isAsked());
    EXPECT_FALSE(given(now));
    EXPECT_TRUE(agent.isAsked());
}

}  // namespace
}  // namespace kestrav
