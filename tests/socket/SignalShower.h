#pragma once

#include <atomic>
#include <chrono>
#include <csignal>
#include <pthread.h>
#include <thread>

namespace kestrav {

/// Interrupts the thread that made it every few milliseconds with a signal whose handler is installed without
/// SA_RESTART, so that each blocking call of that thread fails with EINTR again and again.
class SignalShower {
  public:
    SignalShower() {
        handled() = 0;
        struct sigaction action {};
        action.sa_handler = [](int) { ++handled(); };
        ::sigaction(SIGUSR1, &action, &before_);
        showering_ = std::thread([this, target = ::pthread_self()] {
            while (!over_) {
                ::pthread_kill(target, SIGUSR1);
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
        });
    }
    ~SignalShower() {
        over_ = true;
        showering_.join();
        ::sigaction(SIGUSR1, &before_, nullptr);
    }
    SignalShower(const SignalShower&) = delete;
    SignalShower& operator=(const SignalShower&) = delete;

    int interruptions() const { return handled(); }

  private:
    static std::atomic<int>& handled() {
        static std::atomic<int> count = 0;
        return count;
    }

    std::atomic<bool> over_ = false;
    struct sigaction before_ {};
    std::thread showering_;
};

}  // namespace kestrav
