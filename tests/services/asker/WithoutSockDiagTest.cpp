// A kernel without sock_diag, or without its part for TCP: what it would say is put in its place in a process of its
// own.

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <linux/filter.h>
#include <linux/netlink.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "services/asker/PeerIdentity.h"
#include "tests/services/CommandDaemon.h"

namespace kestrav {
namespace {

/// From here on this process and its children get no socket of sock_diag's.
void loseSockDiag() {
    constexpr auto kFamily = offsetof(seccomp_data, args[0]);
    constexpr auto kProtocol = offsetof(seccomp_data, args[2]);
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_socket, 0, 5),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kFamily),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, AF_NETLINK, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kProtocol),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, NETLINK_SOCK_DIAG, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPROTONOSUPPORT),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{std::size(program), program};
    const bool lost =
        ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
    if (!lost || ::socket(AF_NETLINK, SOCK_RAW, NETLINK_SOCK_DIAG) >= 0) ::_exit(9);
}

void loseProc() {
    const bool lost = ::unshare(CLONE_NEWNS) == 0 && ::mount("", "/", "", MS_REC | MS_PRIVATE, nullptr) == 0 &&
                      ::mount("empty", "/proc", "tmpfs", 0, nullptr) == 0;
    if (!lost) ::_exit(8);
}

/// What `task` returns in a process of its own.
std::string inAProcess(const std::function<std::string()>& task) {
    int ends[2];
    if (::pipe(ends) != 0) return "no pipe";
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        const std::string text = task();
        ::_exit(::write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1);
    }
    ::close(ends[1]);
    std::string text;
    char piece[4096];
    for (ssize_t got = 0; (got = ::read(ends[0], piece, sizeof piece)) > 0;)
        text.append(piece, static_cast<std::size_t>(got));
    ::close(ends[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);
    return status == 0 ? text : "ended with " + std::to_string(status);
}

std::string foundOrNot(int connection) {
    const auto identity = peerIdentity(connection);
    if (!identity) return identity.problem().sentence;
    return std::to_string(identity.value().uid) + " " + std::to_string(identity.value().inode);
}

class WithoutSockDiag : public testing::Test {
  protected:
    std::uint16_t port_ = 0;
    const UniqueFd listener_ = listenOnFreePort(port_);
    Client client_{port_};
    const UniqueFd service_{::accept(listener_.get(), nullptr, nullptr)};
};

TEST_F(WithoutSockDiag, ThePeerIsFoundInTheTableOfConnections) {
    struct stat status {};
    ASSERT_EQ(::fstat(client_.socket(), &status), 0);
    EXPECT_EQ(inAProcess([&] {
                  loseSockDiag();
                  return foundOrNot(service_.get());
              }),
              std::to_string(::geteuid()) + " " + std::to_string(status.st_ino));
}

TEST_F(WithoutSockDiag, APeerThatEndsItsSendingIsStillThere) {
    client_.finishSending();
    const std::string found = foundOrNot(service_.get());
    EXPECT_EQ(inAProcess([&] {
                  loseSockDiag();
                  return foundOrNot(service_.get());
              }),
              found);
}

TEST_F(WithoutSockDiag, APeerThatHasClosedIsGone) {
    client_.close();
    EXPECT_EQ(inAProcess([&] {
                  loseSockDiag();
                  return foundOrNot(service_.get());
              }),
              "the other end of the connection is gone.");
}

TEST_F(WithoutSockDiag, AndWithoutTheTableTheSentenceSaysWhatIsMissing) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: mounts";
    EXPECT_EQ(inAProcess([&] {
                  loseProc();
                  loseSockDiag();
                  return foundOrNot(service_.get());
              }),
              "the system does not tell who is asking: neither sock_diag nor /proc/net/tcp can be read.");
}

TEST_F(WithoutSockDiag, TheServiceServesRootAndJudgesOthers) {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root: asks as another user";
    EXPECT_EQ(inAProcess([] {
                  loseSockDiag();
                  const CommandDaemon daemon;
                  return ask(daemon.port(), "rm", {});
              }),
              "Refused: \"rm\" is not a command of this service.");
    EXPECT_THAT(inAProcess([] {
                    loseSockDiag();
                    const CommandDaemon daemon;
                    return inAProcess([&daemon] {
                        if (::setresuid(65534, 65534, 65534) != 0) ::_exit(7);
                        return ask(daemon.port(), "umount", {"/dev/sdzzs1"});
                    });
                }),
                testing::StartsWith("Refused: the authorization service (polkit) "));
}

}  // namespace
}  // namespace kestrav
