#include "services/jobs/howEnded.h"

#include <csignal>
#include <cstring>
#include <sys/wait.h>

#include "base/retry.h"

namespace kestrav {

std::string howEnded(pid_t child) {
    siginfo_t end{};
    const auto id = static_cast<id_t>(child);
    if (retry([&] { return ::waitid(P_PID, id, &end, WEXITED | WNOWAIT); }) != 0) return "ended unseen";
    const std::string number = std::to_string(end.si_status);
    if (end.si_code == CLD_EXITED) return "ended with status " + number;
    const char* const name = ::sigdescr_np(end.si_status);
    return "was ended by signal " + number + (name != nullptr ? " (" + std::string(name) + ")" : "");
}

}  // namespace kestrav
