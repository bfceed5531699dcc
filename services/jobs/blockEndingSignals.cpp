#include "services/jobs/blockEndingSignals.h"

namespace kestrav {
namespace {

constexpr std::array kMeaninglessSignals{SIGPIPE, SIGUSR1, SIGUSR2, SIGALRM, SIGVTALRM, SIGPROF};

}  // namespace

void blockEndingSignals() {
    for (const int signal : kMeaninglessSignals)
        ::signal(signal, SIG_IGN);
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGCHLD);
    for (const int signal : kEndingSignals)
        ::sigaddset(&signals, signal);
    ::sigprocmask(SIG_BLOCK, &signals, nullptr);
    // Whoever started the service may have ignored them: then none would arrive, and no child could be waited for.
    for (const int signal : kEndingSignals)
        ::signal(signal, SIG_DFL);
    ::signal(SIGCHLD, SIG_DFL);
}

void ignoreEndingSignals() {
    for (const int signal : kEndingSignals)
        ::signal(signal, SIG_IGN);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

}  // namespace kestrav
