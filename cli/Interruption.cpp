#include "cli/Interruption.h"

#include <array>
#include <cstdint>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

#include "base/retry.h"
#include "cli/ExitCode.h"

namespace kestrav {
namespace {

sigset_t onlyInterrupt() {
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGINT);
    return signals;
}

/// The next one ends the process as if nobody had been listening.
void letTheNextOneEnd() {
    const sigset_t signals = onlyInterrupt();
    ::signal(SIGINT, SIG_DFL);
    ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

}  // namespace

Interruption::Interruption(std::function<void()> lastWords) {
    const sigset_t signals = onlyInterrupt();
    struct sigaction now {};
    // Who starts a program with the signal ignored, as nohup's relatives do, means it.
    if (::sigaction(SIGINT, nullptr, &now) == 0 && now.sa_handler == SIG_IGN) return;
    signal_.reset(::signalfd(-1, &signals, SFD_CLOEXEC));
    end_.reset(::eventfd(0, EFD_CLOEXEC));
    if (!signal_ || !end_) return;
    ::pthread_sigmask(SIG_BLOCK, &signals, &before_);
    waiting_ = std::thread([this, words = std::move(lastWords)] { wait(words); });
}

Interruption::~Interruption() {
    if (!waiting_.joinable()) return;
    const std::uint64_t one = 1;
    retry([&] { return ::write(end_.get(), &one, sizeof one); });
    waiting_.join();
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void Interruption::wait(const std::function<void()>& lastWords) const {
    std::array<pollfd, 2> ready{{{signal_.get(), POLLIN, 0}, {end_.get(), POLLIN, 0}}};
    retry([&] { return ::poll(ready.data(), ready.size(), -1); });
    if ((ready[0].revents & POLLIN) == 0) return;
    // Left there, it would be taken for the next one.
    signalfd_siginfo seen{};
    retry([&] { return ::read(signal_.get(), &seen, sizeof seen); });
    letTheNextOneEnd();
    lastWords();
    ::_exit(static_cast<int>(ExitCode::interrupted));
}

}  // namespace kestrav
