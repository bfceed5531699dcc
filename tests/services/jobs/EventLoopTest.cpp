#include <array>
#include <chrono>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>

#include "base/UniqueFd.h"
#include "services/jobs/EventLoop.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;

TEST(EventLoop, EndsWithWhatAHandlerThrows) {
    EventLoop loop;
    const auto watch = loop.after(0us, [] { throw std::runtime_error("out of luck"); });
    EXPECT_THROW(loop.run(), std::runtime_error);
}

TEST(EventLoop, LetsAHandlerReleaseItsOwnWatch) {
    EventLoop loop;
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const UniqueFd out(ends[0]);
    const UniqueFd in(ends[1]);
    ASSERT_EQ(::write(in.get(), "x", 1), 1);
    int calls = 0;
    EventLoop::Watch watch;
    const std::string kept = "captured by the handler, and used after its watch is gone";
    watch = loop.onReadable(out.get(), [&calls, &watch, kept] {
        watch.reset();
        calls += kept.empty() ? 100 : 1;
    });
    const auto end = loop.after(50ms, [&loop] { loop.end(); });
    loop.run();
    EXPECT_EQ(calls, 1);
}

TEST(EventLoop, ForgetsWhatIsNoLongerWatched) {
    EventLoop loop;
    bool called = false;
    auto watch = loop.after(1ms, [&called] { called = true; });
    watch.reset();
    const auto end = loop.after(20ms, [&loop] { loop.end(); });
    loop.run();
    EXPECT_FALSE(called);
}

TEST(EventLoop, CallsWhatComesAfterEverythingAfterEach) {
    EventLoop loop;
    int events = 0;
    int after = 0;
    const auto post = loop.afterEverything([&after] { ++after; });
    const auto first = loop.after(1ms, [&events] { ++events; });
    const auto last = loop.after(100ms, [&] {
        ++events;
        loop.end();
    });
    loop.run();
    EXPECT_EQ(events, 2);
    EXPECT_GE(after, 1);
}

}  // namespace
}  // namespace kestrav
