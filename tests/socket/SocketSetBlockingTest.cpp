#include <cstdint>
#include <fcntl.h>
#include <gtest/gtest.h>

#include "socket/socket_set_blocking.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

struct Mode {
    int before;
    std::int32_t on;
    int after;
};

class SocketSetBlocking : public ::testing::TestWithParam<Mode> {};

TEST_P(SocketSetBlocking, ChangesOneFlagAndKeepsTheOthers) {
    const UniqueFd fd = kestrav::boundSocket(SOCK_STREAM);
    const int other = O_RDWR | O_ASYNC;
    ASSERT_EQ(::fcntl(fd.get(), F_SETFL, other | GetParam().before), 0);
    socket_set_blocking(fd.get(), GetParam().on);
    EXPECT_EQ(::fcntl(fd.get(), F_GETFL) & (O_ACCMODE | O_ASYNC | O_NONBLOCK), other | GetParam().after);
}

INSTANTIATE_TEST_SUITE_P(Modes, SocketSetBlocking,
                         ::testing::Values(Mode{0, 0, O_NONBLOCK}, Mode{O_NONBLOCK, 0, O_NONBLOCK},
                                           Mode{O_NONBLOCK, 1, 0}, Mode{0, 1, 0}, Mode{O_NONBLOCK, -1, 0}));

}  // namespace
}  // namespace kestrav
