#include <gtest/gtest.h>

#include "command/linux/HelperPresence.h"
#include "tests/command/fakes/BusHelper.h"
#include "tests/sandbox/PrivateBus.h"

namespace kestrav {
namespace {

constexpr const char* kName = "com.corvatel.KestravHelper";

TEST(HelperPresence, IsUnknownWithoutABus) {
    PrivateBus bus;
    bus.kill();
    EXPECT_FALSE(helperPresence(bus.address(), kName));
}

TEST(HelperPresence, TellsWhatIsThereFromWhatMayBeStarted) {
    const PrivateBus bus;
    const auto nothing = helperPresence(bus.address(), kName);
    ASSERT_TRUE(nothing);
    EXPECT_FALSE(nothing->owned);
    EXPECT_FALSE(nothing->startable);

    bus.addActivatable(kName, "/bin/false");
    const auto startable = helperPresence(bus.address(), kName);
    ASSERT_TRUE(startable);
    EXPECT_FALSE(startable->owned);
    EXPECT_TRUE(startable->startable);

    const BusHelper helper(bus.address(), [](sd_bus_message*) { return 0; });
    const auto running = helperPresence(bus.address(), kName);
    ASSERT_TRUE(running);
    EXPECT_TRUE(running->owned);
    EXPECT_FALSE(helperPresence(bus.address(), "com.corvatel.Another")->owned);
}

}  // namespace
}  // namespace kestrav
