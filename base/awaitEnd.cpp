#include "base/awaitEnd.h"

#include "base/retry.h"

namespace kestrav {

std::optional<siginfo_t> awaitEnd(pid_t child) {
    siginfo_t end{};
    if (retry([&] { return ::waitid(P_PID, static_cast<id_t>(child), &end, WEXITED | WNOWAIT); }) != 0) return {};
    return end;
}

}  // namespace kestrav
