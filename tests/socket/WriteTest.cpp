#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>

#include "socket/tcp.h"
#include "tests/socket/Loopback.h"

namespace kestrav {
namespace {

bool sigpipeIsPending() {
    sigset_t pending;
    ::sigpending(&pending);
    return ::sigismember(&pending, SIGPIPE) == 1;
}

bool sigpipeIsBlocked() {
    sigset_t mask;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return ::sigismember(&mask, SIGPIPE) == 1;
}

std::string readAll(int fd) {
    std::string all;
    std::array<char, 4096> buffer{};
    ssize_t count = 0;
    while ((count = ::read(fd, buffer.data(), buffer.size())) > 0)
        all.append(buffer.data(), static_cast<std::size_t>(count));
    return all;
}

std::pair<UniqueFd, UniqueFd> pipeEnds() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

std::string pattern(std::size_t size) {
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        text[i] = static_cast<char>(i * 31 + i / 251);
    return text;
}

TEST(TcpWriteAll, WritesMoreThanTheBuffersHold) {
    auto [here, there] = connectedPair();
    const std::string sent = pattern(16 << 20);
    std::string received;
    std::thread reader([&received, fd = there.get()] { received = readAll(fd); });
    EXPECT_EQ(tcp_write_all(here.get(), sent.data(), static_cast<std::int32_t>(sent.size())), 16 << 20);
    here.reset();
    reader.join();
    EXPECT_TRUE(received == sent);
}

TEST(TcpWriteAll, WritesToAPipe) {
    auto [end, start] = pipeEnds();
    const std::string sent = pattern(1 << 20);
    std::string received;
    std::thread reader([&received, fd = end.get()] { received = readAll(fd); });
    EXPECT_EQ(tcp_write_all(start.get(), sent.data(), 1 << 20), 1 << 20);
    start.reset();
    reader.join();
    EXPECT_TRUE(received == sent);
}

TEST(TcpWriteAll, WritesToAFile) {
    std::string path = ::testing::TempDir() + "tcp_write_all.XXXXXX";
    const UniqueFd file(::mkostemp(path.data(), O_CLOEXEC));
    EXPECT_EQ(tcp_write_all(file.get(), "hello", 5), 5);
    ::lseek(file.get(), 0, SEEK_SET);
    EXPECT_EQ(readAll(file.get()), "hello");
    ::unlink(path.c_str());
}

TEST(TcpWriteAll, DoesNotCallWriteForNothing) {
    EXPECT_EQ(tcp_write_all(-1, "", 0), 0);
    EXPECT_EQ(tcp_write_all(-1, "", -1), 0);
}

TEST(TcpWriteAll, FailsWithoutADescriptor) {
    EXPECT_EQ(tcp_write_all(-1, "x", 1), -1);
}

TEST(TcpWriteAll, FailsWithoutASignalWhenThePeerIsGone) {
    auto [here, there] = connectedPair();
    ::shutdown(here.get(), SHUT_WR);
    EXPECT_EQ(tcp_write_all(here.get(), "x", 1), -1);
    EXPECT_FALSE(sigpipeIsPending());
}

TEST(TcpWriteAll, FailsWithoutASignalWhenNobodyReadsThePipe) {
    auto [end, start] = pipeEnds();
    end.reset();
    EXPECT_EQ(tcp_write_all(start.get(), "x", 1), -1);
    EXPECT_FALSE(sigpipeIsPending());
    EXPECT_FALSE(sigpipeIsBlocked());
}

TEST(TcpWriteAll, LeavesASignalThatWasPendingBefore) {
    auto [end, start] = pipeEnds();
    end.reset();
    sigset_t sigpipe;
    ::sigemptyset(&sigpipe);
    ::sigaddset(&sigpipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &sigpipe, nullptr);
    ::pthread_kill(::pthread_self(), SIGPIPE);
    EXPECT_EQ(tcp_write_all(start.get(), "x", 1), -1);
    EXPECT_TRUE(sigpipeIsPending());
    EXPECT_TRUE(sigpipeIsBlocked());
    const timespec now{};
    ::sigtimedwait(&sigpipe, nullptr, &now);
    ::pthread_sigmask(SIG_UNBLOCK, &sigpipe, nullptr);
}

}  // namespace
}  // namespace kestrav
