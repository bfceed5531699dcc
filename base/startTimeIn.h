#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kestrav {

/// When a process was started, in clock ticks since the boot: field 22 of the line in its /proc/PID/stat, see proc(5).
/// Nothing when `stat` is not such a line. The name in field 2 may hold anything, blanks and parentheses included.
std::optional<std::uint64_t> startTimeIn(std::string_view stat);

}  // namespace kestrav
