#include "tests/sandbox/ChildProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "base/retry.h"
#include "base/wordPointers.h"
#include "tests/eventually.h"
#include "tests/signalOne.h"

namespace kestrav {
namespace {

std::pair<UniqueFd, UniqueFd> makePipe() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

}  // namespace

ChildProcess::ChildProcess(ChildProcess&& other) noexcept : pid_(std::exchange(other.pid_, -1)) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    if (this != &other) {
        end();
        pid_ = std::exchange(other.pid_, -1);
    }
    return *this;
}

ChildProcess ChildProcess::start(const std::vector<std::string>& words, const std::vector<std::string>& environment) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        // Whoever runs the tests may ignore it, and a program inherits that.
        ::signal(SIGPIPE, SIG_DFL);
        ::execve(words.at(0).c_str(), wordPointers(words).data(), wordPointers(environment).data());
        ::_exit(98);
    }
    return ChildProcess(pid);
}

void ChildProcess::end() {
    if (pid_ <= 0) return;
    signalOne(pid_, SIGKILL);
    wait();
}

int ChildProcess::wait() {
    int status = 0;
    retry([&] { return ::waitpid(pid_, &status, 0); });
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

bool ChildProcess::runs() const {
    siginfo_t info{};
    return pid_ > 0 && ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           info.si_pid == 0;
}

void becomeUser(uid_t uid) {
    if (uid == 0) return;
    const passwd* user = ::getpwuid(uid);
    const gid_t group = user != nullptr ? user->pw_gid : static_cast<gid_t>(uid);
    const int groups = user != nullptr ? ::initgroups(user->pw_name, group) : ::setgroups(0, nullptr);
    if (groups != 0 || ::setgid(group) != 0 || ::setuid(uid) != 0) ::_exit(99);
    // A process that changed its user can't be looked at by that user; one that was started as that user can.
    ::prctl(PR_SET_DUMPABLE, 1);
}

UserProcess::UserProcess(uid_t uid, const std::function<std::string()>& task) {
    auto [goRead, goWrite] = makePipe();
    auto [resultRead, resultWrite] = makePipe();
    const pid_t pid = ::fork();
    if (pid == 0) {
        goWrite.reset();
        becomeUser(uid);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        char byte = '!';
        if (::write(resultWrite.get(), &byte, 1) != 1) ::_exit(95);
        if (::read(goRead.get(), &byte, 1) != 1) ::_exit(97);
        const std::string text = task();
        const bool told = ::write(resultWrite.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
        ::_exit(told ? 0 : 96);
    }
    process_ = ChildProcess(pid);
    go_ = std::move(goWrite);
    result_ = std::move(resultRead);
    resultWrite.reset();
    char ready = 0;
    if (::read(result_.get(), &ready, 1) != 1) throw std::runtime_error("no process of the user");
}

void UserProcess::go() {
    if (::write(go_.get(), "!", 1) != 1) throw std::runtime_error("the user's process is gone");
}

bool UserProcess::endsWithin(std::chrono::milliseconds time) const {
    return eventually([this] { return !process_.runs(); }, time);
}

std::string UserProcess::result() {
    std::string text;
    std::array<char, 1024> part{};
    for (;;) {
        const ssize_t got = retry([&] { return ::read(result_.get(), part.data(), part.size()); });
        if (got <= 0) break;
        text.append(part.data(), static_cast<std::size_t>(got));
    }
    process_.wait();
    return text;
}

}  // namespace kestrav
