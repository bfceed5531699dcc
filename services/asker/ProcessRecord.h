#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace kestrav {

/// What the kernel tells under /proc about one process and all of its threads. Nothing is kept: each question is asked
/// anew. Looking into another user's process needs CAP_SYS_PTRACE.
class ProcessRecord {
  public:
    explicit ProcessRecord(pid_t process) : process_(process), folder_("/proc/" + std::to_string(process)) {}

    /// Those that can be found now.
    static std::vector<pid_t> all();

    /// When it was started, in clock ticks since the boot; nothing when there is no such process.
    std::optional<std::uint64_t> startTime() const;
    /// Whether it has that socket open, in one of its threads at least: a thread may have descriptors of its own.
    bool holds(std::uint32_t inode) const;
    /// Whether descriptors that were sent to a socket of its own wait there to be received: each may be one more of
    /// anything. Told by Linux 5.6 and later.
    bool hasDescriptorsUnderWay() const;
    /// Whether every thread runs as `uid` in every respect: real, effective, saved and for files.
    bool runsAs(uid_t uid) const;
    /// The folders of its threads under /proc, "/proc/PID/task/TID".
    std::vector<std::string> threads() const;

  private:
    std::vector<std::string> descriptorTables() const;

    pid_t process_;
    std::string folder_;
};

/// A field of a file such as /proc/PID/status, without the blanks before it; empty when it isn't there.
std::string statusField(const std::string& path, std::string_view name);

}  // namespace kestrav
