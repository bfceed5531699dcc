#pragma once

#include <atomic>
#include <chrono>
#include <csignal>
#include <pthread.h>
#include <thread>
#include <unistd.h>

#include "tests/base/isAsleep.h"
#include "tests/eventually.h"

namespace kestrav {

/// Interrupts the thread that made it, every few milliseconds and whenever it is asleep, with a signal whose handler is
/// installed without SA_RESTART, so that each blocking call of that thread fails with EINTR again and again.
class SignalShower {
  public:
    SignalShower() {
        handled() = 0;
        struct sigaction action {};
        action.sa_handler = [](int) { ++handled(); };
        ::sigaction(SIGUSR1, &action, &before_);
        showering_ = std::thread([this, target = ::pthread_self(), thread = ::gettid()] { shower(target, thread); });
    }
    ~SignalShower() {
        over_ = true;
        showering_.join();
        ::sigaction(SIGUSR1, &before_, nullptr);
    }
    SignalShower(const SignalShower&) = delete;
    SignalShower& operator=(const SignalShower&) = delete;

    int interruptions() const { return handled(); }

    /// Returns when the thread has been interrupted so often that a call that doesn't stand it has ended. Its caller is
    /// another thread. Gives up after a minute.
    void waitForMany() const {
        eventually([] { return handled() >= kMany; });
    }

    static constexpr int kMany = 10;

  private:
    static constexpr std::chrono::milliseconds kPause{5};

    void shower(pthread_t target, pid_t thread) const {
        while (!over_) {
            if (isAsleep(thread)) ::pthread_kill(target, SIGUSR1);
            std::this_thread::sleep_for(kPause);
        }
    }

    static std::atomic<int>& handled() {
        static std::atomic<int> count = 0;
        return count;
    }

    std::atomic<bool> over_ = false;
    struct sigaction before_ {};
    std::thread showering_;
};

}  // namespace kestrav
