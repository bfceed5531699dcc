#include "tests/sandbox/Terminal.h"

#include <array>
#include <chrono>
#include <csignal>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <termios.h>
#include <unistd.h>

#include "base/wordPointers.h"
#include "tests/eventually.h"

namespace kestrav {

Terminal::Terminal(const std::vector<std::string>& words, uid_t uid, int passedOn) {
    int terminal = -1;
    const pid_t pid = ::forkpty(&terminal, nullptr, nullptr, nullptr);
    if (pid == 0) {
        ::close_range(3, static_cast<unsigned>(passedOn < 0 ? ~0U : static_cast<unsigned>(passedOn) - 1U), 0);
        becomeUser(uid);
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        char* const environment[] = {nullptr};
        ::execve(words.at(0).c_str(), wordPointers(words).data(), environment);
        ::_exit(98);
    }
    if (pid < 0) throw std::runtime_error("no terminal");
    terminal_.reset(terminal);
    process_ = ChildProcess(pid);
}

bool Terminal::isAsked(int seconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (std::chrono::steady_clock::now() < end) {
        if (const auto at = shown_.find("Password: ", seen_); at != std::string::npos) {
            seen_ = at + 1;
            return waitForSilence();
        }
        if (!read(100)) return false;
    }
    return false;
}

/// False at the end of what is shown.
bool Terminal::read(int milliseconds) {
    pollfd wait{terminal_.get(), POLLIN, 0};
    if (::poll(&wait, 1, milliseconds) != 1) return true;
    std::array<char, 512> part{};
    const ssize_t got = ::read(terminal_.get(), part.data(), part.size());
    if (got <= 0) return false;
    shown_.append(part.data(), static_cast<std::size_t>(got));
    return true;
}

bool Terminal::waitForSilence() {
    // The agent throws away what was typed before it turned the echo off, which it does after the prompt.
    return eventually([this] {
        termios mode{};
        return ::tcgetattr(terminal_.get(), &mode) == 0 && (mode.c_lflag & ECHO) == 0;
    });
}

void Terminal::type(const std::string& text) {
    if (::write(terminal_.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw std::runtime_error("the terminal takes nothing");
    }
}

int Terminal::wait() {
    while (read(1000) && process_.runs()) {
    }
    while (read(0)) {
        pollfd more{terminal_.get(), POLLIN, 0};
        if (::poll(&more, 1, 0) != 1) break;
    }
    return process_.wait();
}

}  // namespace kestrav
