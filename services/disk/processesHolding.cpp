#include "services/disk/processesHolding.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <functional>
#include <set>
#include <string_view>
#include <system_error>
#include <unistd.h>

#include "base/shownText.h"
#include "services/disk/MountinfoLine.h"
#include "services/disk/forEachLine.h"
#include "services/disk/isMappingOf.h"
#include "services/disk/leadsToDevice.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

using Numbers = std::vector<dev_t>;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kNamed = 3;
/// Other users' processes may have hundreds of thousands of files and mappings. The answer is waited for.
constexpr std::chrono::seconds kPatience{5};

bool contains(const Numbers& numbers, dev_t number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

/// Calls `take` with each name in a folder of /proc until that returns true, and returns whether it did. Processes end
/// while one looks: what can't be listed is empty.
bool anyNameIn(const std::string& folder, Clock::time_point end, const std::function<bool(const std::string&)>& take) {
    std::error_code error;
    for (fs::directory_iterator at(folder, error), last; !error && at != last; at.increment(error)) {
        if (Clock::now() >= end) return false;
        if (take(at->path().filename().string())) return true;
    }
    return false;
}

std::vector<std::string> processes() {
    std::vector<std::string> ids;
    anyNameIn("/proc", Clock::time_point::max(), [&ids](const std::string& name) {
        if (std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isdigit(c) != 0; }))
            ids.push_back(name);
        return false;
    });
    return ids;
}

bool maps(const std::string& process, const Numbers& numbers) {
    bool found = false;
    forEachLine(process + "/maps", [&](std::string_view line) {
        found = isMappingOf(line, numbers);
        return !found;
    });
    return found;
}

bool uses(const std::string& process, const Numbers& numbers, Clock::time_point end) {
    for (const char* link : {"/cwd", "/root", "/exe"}) {
        if (leadsToDevice(process + link, numbers)) return true;
    }
    const std::string folder = process + "/fd/";
    const auto leads = [&](const std::string& name) { return leadsToDevice(folder + name, numbers); };
    return anyNameIn(folder, end, leads) || maps(process, numbers);
}

/// The groups of propagation that this process's own mounts are members of or follow.
std::set<std::uint64_t> ownGroups() {
    std::set<std::uint64_t> groups;
    forEachLine("/proc/self/mountinfo", [&groups](std::string_view line) {
        if (const auto mount = MountinfoLine::parse(line)) groups.insert(mount->groups.begin(), mount->groups.end());
        return true;
    });
    return groups;
}

/// Whether the process sees one of them mounted where an unmount of ours does not reach.
bool hasMountOfItsOwn(const std::string& process, const Numbers& numbers, const std::set<std::uint64_t>& ours) {
    bool found = false;
    forEachLine(process + "/mountinfo", [&](std::string_view line) {
        const auto mount = MountinfoLine::parse(line);
        if (!mount || !contains(numbers, mount->device)) return true;
        found = std::ranges::none_of(mount->groups, [&ours](std::uint64_t group) { return ours.contains(group); });
        return !found;
    });
    return found;
}

/// One process of each other mount namespace in which one of them is mounted by itself.
std::vector<std::string> mountingElsewhere(const Numbers& numbers, Clock::time_point end) {
    std::vector<std::string> found;
    std::error_code error;
    std::set<std::string> seen{fs::read_symlink("/proc/self/ns/mnt", error)};
    const auto ours = ownGroups();
    for (const std::string& id : processes()) {
        if (Clock::now() >= end) break;
        const std::string process = "/proc/" + id;
        const std::string space = fs::read_symlink(process + "/ns/mnt", error);
        if (space.empty() || !seen.insert(space).second) continue;
        if (hasMountOfItsOwn(process, numbers, ours)) found.push_back(id);
    }
    return found;
}

std::string nameOf(const std::string& id) {
    std::string name;
    forEachLine("/proc/" + id + "/comm", [&name](std::string_view line) {
        name = line;
        return false;
    });
    return shownText(name, 40) + " (" + id + ")";
}

}  // namespace

std::string processesHolding(const std::vector<dev_t>& numbers) {
    const auto end = Clock::now() + kPatience;
    std::vector<std::string> found;
    for (const std::string& id : processes()) {
        if (Clock::now() >= end) break;
        if (id != std::to_string(::getpid()) && uses("/proc/" + id, numbers, end)) found.push_back(id);
    }
    if (found.empty()) found = mountingElsewhere(numbers, end);
    std::string names;
    for (std::size_t i = 0; i < std::min(found.size(), kNamed); ++i)
        names += (names.empty() ? "" : ", ") + nameOf(found[i]);
    if (found.size() > kNamed) names += " and " + std::to_string(found.size() - kNamed) + " others";
    return names;
}

}  // namespace kestrav
