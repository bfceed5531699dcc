#include "services/helper/bless/HeldSignals.h"

#include <algorithm>
#include <array>

namespace kestrav {
namespace {

// A person's, a session's and a service's way to end a program, and what a caller can leave running for it: timers and
// a limit on its time.
constexpr std::array kEnding{SIGHUP,  SIGINT,  SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2,
                             SIGALRM, SIGPROF, SIGXCPU, SIGIO,   SIGPWR,  SIGVTALRM};

bool isIgnored(int number) {
    struct sigaction action {};
    return ::sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

HeldSignals::HeldSignals() {
    ::sigemptyset(&held_);
    for (const int number : kEnding) {
        // A caller that had one ignored, as nohup(1) does, is obeyed; held, it would count as waiting.
        if (!isIgnored(number)) ::sigaddset(&held_, number);
    }
    ::sigprocmask(SIG_BLOCK, &held_, &before_);
}

HeldSignals::~HeldSignals() {
    ::sigprocmask(SIG_SETMASK, &before_, nullptr);
}

bool HeldSignals::endIsNear() const {
    sigset_t waiting;
    ::sigpending(&waiting);
    return std::ranges::any_of(kEnding, [&](int number) {
        return ::sigismember(&held_, number) == 1 && ::sigismember(&waiting, number) == 1;
    });
}

}  // namespace kestrav
