#include "command/BoardEntry.h"

#include <cerrno>
#include <csignal>

#include "base/startTimeIn.h"
#include "base/wholeFile.h"

namespace kestrav {
namespace {

/// When that process was started; nothing where it can't be seen, as under hidepid.
std::optional<std::uint64_t> startOf(pid_t process) {
    const auto line = readWholeFile("/proc/" + std::to_string(process) + "/stat", kLongestBoard);
    if (!line) return std::nullopt;
    return startTimeIn(line.value());
}

}  // namespace

bool BoardEntry::writerIsGone() const {
    if (::kill(writer, 0) != 0 && errno == ESRCH) return true;
    const auto start = startOf(writer);
    return start && *start != writerStart;
}

}  // namespace kestrav
