#include "tests/room/PasswordAgent.h"

#include <array>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace kestrav {

PasswordAgent::PasswordAgent(pid_t subject, uid_t uid) {
    int ready[2];
    if (::pipe(ready) != 0) throw std::runtime_error("no pipe");
    int terminal = -1;
    const pid_t pid = ::forkpty(&terminal, nullptr, nullptr, nullptr);
    if (pid == 0) {
        ::close(ready[0]);
        becomeUser(uid);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        const std::string process = std::to_string(subject);
        const std::string readyFd = std::to_string(ready[1]);
        char* const environment[] = {nullptr};
        const char* const words[] = {"/usr/bin/pkttyagent", "--process",     process.c_str(),
                                     "--notify-fd",         readyFd.c_str(), nullptr};
        ::execve(words[0], const_cast<char* const*>(words), environment);
        ::_exit(98);
    }
    terminal_.reset(terminal);
    process_ = ChildProcess(pid);
    ::close(ready[1]);
    const UniqueFd readyEnd(ready[0]);
    pollfd wait{readyEnd.get(), POLLIN, 0};
    // Closed by the agent once it is registered, or by its end.
    if (::poll(&wait, 1, 10'000) != 1 || !process_.runs()) throw std::runtime_error("no agent");
}

bool PasswordAgent::isAsked(int seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (std::chrono::steady_clock::now() < end) {
        if (const auto at = shown_.find("Password: ", seen_); at != std::string::npos) {
            seen_ = at + 1;
            return waitForSilence();
        }
        pollfd wait{terminal_.get(), POLLIN, 0};
        if (::poll(&wait, 1, 100) != 1) continue;
        std::array<char, 512> part{};
        const ssize_t got = ::read(terminal_.get(), part.data(), part.size());
        if (got <= 0) return false;
        shown_.append(part.data(), static_cast<std::size_t>(got));
    }
    return false;
}

bool PasswordAgent::waitForSilence() {
    // The agent throws away what was typed before it turned the echo off, which it does after the prompt.
    for (int i = 0; i < 1000; ++i) {
        termios mode{};
        if (::tcgetattr(terminal_.get(), &mode) == 0 && (mode.c_lflag & ECHO) == 0) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

void PasswordAgent::type(const std::string& text) {
    if (::write(terminal_.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::runtime_error("the terminal takes nothing");
    }
}

}  // namespace kestrav
