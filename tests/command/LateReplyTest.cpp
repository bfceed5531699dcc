// A reply whose first bytes come just when the time for it is over. That moment lies within the client, so the service
// of this test is told of it there.

#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <vector>

#include "base/SystemLog.h"
#include "base/UniqueFd.h"
#include "command/CommandService.h"
#include "tests/base/RecordingLog.h"
#include "tests/command/fakes/RecordedAnswers.h"
#include "tests/socket/Loopback.h"

namespace {

std::function<void()> beforeALook;

}  // namespace

extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
ssize_t __real_recv(int fd, void* into, std::size_t size, int flags);

ssize_t __wrap_recv(int fd, void* into, std::size_t size, int flags) {
    if ((flags & MSG_PEEK) != 0 && beforeALook) {
        beforeALook();
        pollfd arrived{fd, POLLIN, 0};
        EXPECT_EQ(::poll(&arrived, 1, -1), 1);
    }
    return __real_recv(fd, into, size, flags);
}
// NOLINTEND(bugprone-reserved-identifier)
}

namespace kestrav {
namespace {

TEST(LateReply, IsNoneInTimeOfAServiceThatIsThere) {
    const UniqueFd listening = listener();
    UniqueFd service;
    beforeALook = [&] {
        service.reset(::accept(listening.get(), nullptr, nullptr));
        EXPECT_EQ(::send(service.get(), "W", 1, MSG_NOSIGNAL), 1);
    };
    RecordingLog log;
    RecordedAnswers answers;
    CommandService client(log, {.port = portOf(listening.get()), .connectSeconds = 60, .readSeconds = 1}, &answers);
    EXPECT_EQ(client.runWithCommand("dd", std::vector<std::string>{"x"}), "");
    beforeALook = nullptr;
    ASSERT_EQ(answers.unanswered().size(), 1U);
    EXPECT_EQ(answers.unanswered()[0].why, Unanswered::Why::noReplyInTime);
    EXPECT_TRUE(log.entries().empty());
}

}  // namespace
}  // namespace kestrav
