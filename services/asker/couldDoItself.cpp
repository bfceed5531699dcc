#include "services/asker/couldDoItself.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <linux/capability.h>
#include <string>
#include <sys/stat.h>

#include "base/systemWords.h"
#include "services/asker/ProcessRecord.h"

namespace kestrav {
namespace {

constexpr std::uint64_t bit(unsigned capability) {
    return std::uint64_t{1} << capability;
}

// Unmounting and the flush of a disk; nodes and images that belong to others.
constexpr std::uint64_t kTaken = bit(CAP_SYS_ADMIN) | bit(CAP_DAC_OVERRIDE);

std::uint64_t capabilities(const std::string& folder) {
    return std::strtoull(statusField(folder + "/status", "CapEff:").c_str(), nullptr, 16);
}

/// Whether two of /proc's links lead to the same, whatever their texts say.
Outcome<bool> leadToTheSame(const std::string& one, const std::string& other) {
    struct stat a {};
    struct stat b {};
    if (::stat(one.c_str(), &a) != 0 || ::stat(other.c_str(), &b) != 0) {
        const std::error_code cause(errno, std::generic_category());
        return refused(
            "the system does not tell what the process that asks may do: " + systemWords(cause.value()) + ".", cause);
    }
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

Outcome<void> threadCould(const std::string& thread) {
    for (const char* view : {"/root", "/ns/mnt"}) {
        const auto same = leadToTheSame(thread + view, std::string("/proc/self") + view);
        if (!same) return same.problem();
        if (!same.value()) return refused("the process that asks sees other folders than the service does.");
    }
    // A capability counts in the user namespace that it was given in.
    const auto same = leadToTheSame(thread + "/ns/user", "/proc/self/ns/user");
    if (!same) return same.problem();
    const std::uint64_t needed = kTaken & capabilities("/proc/self");
    if (same.value() && (capabilities(thread) & needed) == needed) return {};
    return refused("the process that asks has given up the rights that this takes, or was started without them.");
}

}  // namespace

Outcome<void> couldDoItself(pid_t process, uid_t uid) {
    const ProcessRecord record(process);
    const auto before = record.startTime();
    if (!before) return refused("the process that asks is gone.");
    if (!record.runsAs(uid)) return refused("the process that asks runs with other rights than its user's.");
    // Threads share their memory: what one of them can do they all can.
    Outcome<void> could = refused("the process that asks is gone.");
    for (const std::string& thread : record.threads()) {
        could = threadCould(thread);
        if (could) break;
    }
    if (record.startTime() != before) return refused("the process that asks is gone.");
    return could;
}

}  // namespace kestrav
