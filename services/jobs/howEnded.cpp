#include "services/jobs/howEnded.h"

#include <csignal>
#include <cstring>

#include "base/awaitEnd.h"

namespace kestrav {

std::string howEnded(pid_t child) {
    const auto end = awaitEnd(child);
    if (!end) return "ended unseen";
    const std::string number = std::to_string(end->si_status);
    if (end->si_code == CLD_EXITED) return "ended with status " + number;
    const char* const name = ::sigdescr_np(end->si_status);
    return "was ended by signal " + number + (name != nullptr ? " (" + std::string(name) + ")" : "");
}

}  // namespace kestrav
