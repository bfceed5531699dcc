#include "services/asker/ProcessRecord.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <dirent.h>
#include <linux/kcmp.h>
#include <memory>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

#include "base/fieldIn.h"
#include "base/startTimeIn.h"
#include "base/wholeFile.h"
#include "services/asker/areAll.h"

namespace kestrav {
namespace {

/// A status with as many groups as a process may have is shorter.
constexpr std::size_t kLongestFile = std::size_t{1} << 20U;

struct CloseFolder {
    void operator()(DIR* folder) const noexcept { ::closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

/// The entries of a folder whose names are numbers: processes, threads.
std::vector<pid_t> numbersIn(const std::string& path) {
    std::vector<pid_t> found;
    const Folder folder(::opendir(path.c_str()));
    while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
        const std::string_view name = entry->d_name;
        pid_t value = 0;
        const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), value);
        if (error == std::errc() && end == name.data() + name.size()) found.push_back(value);
    }
    return found;
}

/// Whether `isIt` takes one of the descriptors of a table, by its number and the text of its link, as far as that may
/// be the name of a socket. There may be very many in all: each is looked up from its folder, which takes a fraction of
/// the time of a look from the root.
template <class IsIt>
bool anyDescriptor(const std::string& table, IsIt isIt) {
    const Folder folder(::opendir((table + "/fd").c_str()));
    std::array<char, 64> target;  // NOLINT: only what readlinkat() wrote is looked at
    while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
        if (entry->d_name[0] == '.') continue;
        const ssize_t length = ::readlinkat(::dirfd(folder.get()), entry->d_name, target.data(), target.size());
        if (isIt(entry->d_name, {target.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0))})) return true;
    }
    return false;
}

/// Told by the number of links to the folder of threads, which the kernel keeps as other file systems do: two, and one
/// for each folder in it. To list it would be five calls, and most programs have one thread.
bool hasOneThread(const std::string& process) {
    constexpr nlink_t kLinksOfOne = 3;
    struct stat status {};
    return ::stat((process + "/task").c_str(), &status) == 0 && status.st_nlink == kLinksOfOne;
}

/// Empty when it can't be read, as that of a process or a thread that ends at any moment: between the opening of its
/// file and the reading, too.
std::string contentsOf(const std::string& path) {
    auto file = readWholeFile(path, kLongestFile);
    return file ? std::move(file.value()) : std::string();
}

bool tableHolds(const std::string& table, const std::string& socket) {
    return anyDescriptor(table, [&](const char*, std::string_view target) { return target == socket; });
}

bool tableHasDescriptorsUnderWay(const std::string& table) {
    return anyDescriptor(table, [&](const char* number, std::string_view target) {
        if (!target.starts_with("socket:")) return false;
        const std::string count = statusField(table + "/fdinfo/" + number, "scm_fds:");
        return !count.empty() && count != "0";
    });
}

}  // namespace

std::string statusField(const std::string& path, std::string_view name) {
    return std::string(fieldIn(contentsOf(path), name));
}

std::vector<pid_t> ProcessRecord::all() {
    return numbersIn("/proc");
}

std::optional<std::uint64_t> ProcessRecord::startTime() const {
    return startTimeIn(contentsOf(folder_ + "/stat"));
}

std::vector<std::string> ProcessRecord::threads() const {
    std::vector<std::string> folders;
    for (const pid_t thread : numbersIn(folder_ + "/task"))
        folders.push_back(folder_ + "/task/" + std::to_string(thread));
    return folders;
}

/// One for all threads that share it: a program of many threads would take long otherwise. Where the kernel does not
/// compare (kcmp(2)), each thread has one.
std::vector<std::string> ProcessRecord::descriptorTables() const {
    std::vector<std::string> tables{folder_};
    if (hasOneThread(folder_)) return tables;
    for (const pid_t thread : numbersIn(folder_ + "/task")) {
        if (thread == process_ || ::syscall(SYS_kcmp, process_, thread, KCMP_FILES, 0, 0) == 0) continue;
        tables.push_back(folder_ + "/task/" + std::to_string(thread));
    }
    return tables;
}

bool ProcessRecord::holds(std::uint32_t inode) const {
    const std::string socket = "socket:[" + std::to_string(inode) + "]";
    return std::ranges::any_of(descriptorTables(), [&](const std::string& table) { return tableHolds(table, socket); });
}

bool ProcessRecord::hasDescriptorsUnderWay() const {
    return std::ranges::any_of(descriptorTables(), tableHasDescriptorsUnderWay);
}

bool ProcessRecord::runsAs(uid_t uid) const {
    const auto threadRunsAs = [uid](const std::string& thread) {
        const std::string field = statusField(thread + "/status", "Uid:");
        if (field.empty() && ::access(thread.c_str(), F_OK) != 0) return true;  // it has ended meanwhile
        return areAll(field, uid);
    };
    const auto folders = threads();
    return !folders.empty() && std::ranges::all_of(folders, threadRunsAs);
}

}  // namespace kestrav
