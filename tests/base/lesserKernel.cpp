#include "tests/base/lesserKernel.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <iterator>
#include <linux/filter.h>
#include <linux/netlink.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrav {

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
    std::array<char, 4096> piece{};
    for (ssize_t got = 0; (got = ::read(ends[0], piece.data(), piece.size())) > 0;)
        text.append(piece.data(), static_cast<std::size_t>(got));
    ::close(ends[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);
    return status == 0 ? text : "ended with " + std::to_string(status);
}

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

}  // namespace kestrav
