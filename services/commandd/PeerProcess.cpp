#include "services/commandd/PeerProcess.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace kestrav {
namespace {

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

Folder openFolder(const std::string& path) {
    return Folder(::opendir(path.c_str()));
}

std::optional<pid_t> number(std::string_view name) {
    pid_t value = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), value);
    if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;
    return value;
}

bool holds(pid_t pid, std::string_view socket) {
    const Folder folder = openFolder("/proc/" + std::to_string(pid) + "/fd");
    if (!folder) return false;
    std::array<char, 64> target{};
    while (const dirent* entry = ::readdir(folder.get())) {
        const ssize_t length = ::readlinkat(::dirfd(folder.get()), entry->d_name, target.data(), target.size());
        if (length > 0 && std::string_view(target.data(), static_cast<std::size_t>(length)) == socket) return true;
    }
    return false;
}

std::vector<pid_t> holders(std::uint32_t inode) {
    const std::string socket = "socket:[" + std::to_string(inode) + "]";
    std::vector<pid_t> found;
    const Folder processes = openFolder("/proc");
    if (!processes) return found;
    while (const dirent* entry = ::readdir(processes.get())) {
        const auto pid = number(entry->d_name);
        if (pid && holds(*pid, socket)) found.push_back(*pid);
    }
    return found;
}

std::string contents(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Field 22 of /proc/PID/stat, see proc(5). The name in field 2 may hold anything, blanks and parentheses included.
std::optional<std::uint64_t> startTime(pid_t pid) {
    const std::string stat = contents("/proc/" + std::to_string(pid) + "/stat");
    const std::size_t nameEnd = stat.rfind(')');
    if (nameEnd == std::string::npos) return std::nullopt;
    std::istringstream fields(stat.substr(nameEnd + 1));
    std::string skipped;
    for (int field = 3; field < 22; ++field)
        fields >> skipped;
    std::uint64_t time = 0;
    if (!(fields >> time)) return std::nullopt;
    return time;
}

/// Whether the process runs as `uid` in every respect: real, effective, saved and for files.
bool runsAs(pid_t pid, uid_t uid) {
    std::istringstream lines(contents("/proc/" + std::to_string(pid) + "/status"));
    for (std::string line; std::getline(lines, line);) {
        if (!line.starts_with("Uid:")) continue;
        std::istringstream numbers(line.substr(4));
        const std::vector<uid_t> all{std::istream_iterator<uid_t>(numbers), {}};
        return all.size() == 4 && std::ranges::all_of(all, [uid](uid_t one) { return one == uid; });
    }
    return false;
}

}  // namespace

Outcome<AskingProcess> processHolding(const PeerIdentity& peer) {
    const auto found = holders(peer.inode);
    if (found.empty()) return refused("no process can be found behind the connection.");
    if (found.size() > 1) return refused("several processes share the connection, so nobody can tell who asks.");
    const pid_t pid = found.front();
    const auto before = startTime(pid);
    if (!runsAs(pid, peer.uid))
        return refused("the process behind the connection runs with other rights than its user's.");
    // Held by the same process before and after, so what was read in between is about that process.
    if (!before || !holds(pid, "socket:[" + std::to_string(peer.inode) + "]") || startTime(pid) != before) {
        return refused("the process behind the connection is gone.");
    }
    return AskingProcess{pid, *before, peer.uid};
}

}  // namespace kestrav
