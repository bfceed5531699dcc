#include "command/BoardEntry.h"

#include <cerrno>
#include <charconv>
#include <csignal>

#include "base/wholeFile.h"

namespace kestrav {
namespace {

/// Field 22 of the line that proc(5) has for that process; nothing where it can't be seen, as under hidepid.
std::optional<std::uint64_t> startOf(pid_t process) {
    const auto line = readWholeFile("/proc/" + std::to_string(process) + "/stat", kLongestBoard);
    if (!line) return std::nullopt;
    const std::string& text = line.value();
    // The name in parentheses is whatever the program likes, blanks and parentheses included.
    std::size_t at = text.rfind(')');
    for (int field = 2; field < 22 && at != std::string::npos; ++field)
        at = text.find(' ', at + 1);
    std::uint64_t start = 0;
    if (at == std::string::npos) return std::nullopt;
    const auto [end, error] = std::from_chars(text.data() + at + 1, text.data() + text.size(), start);
    return error == std::errc() ? std::optional(start) : std::nullopt;
}

}  // namespace

bool BoardEntry::writerIsGone() const {
    if (::kill(writer, 0) != 0 && errno == ESRCH) return true;
    const auto start = startOf(writer);
    return start && *start != writerStart;
}

}  // namespace kestrav
