#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace kestrav {

/// One line of /proc/PID/mountinfo: a mount, as proc(5) describes it.
struct MountinfoLine {
    std::uint64_t id = 0;
    std::uint64_t parent = 0;  ///< the mount that it is mounted on
    dev_t device = 0;
    std::string place;                  ///< where, as the process sees it
    std::vector<std::uint64_t> groups;  ///< of propagation: those that it is a member of, and those that it follows

    /// Nothing when the line has not that form. Any bytes may be in it.
    static std::optional<MountinfoLine> parse(std::string_view line);
    /// A name as the kernel writes it there: blanks, tabs, line ends and backslashes are a backslash and three octal
    /// digits.
    static std::string unescaped(std::string_view word);
};

}  // namespace kestrav
