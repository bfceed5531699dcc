#include "services/privileged/DiskHolders.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <system_error>
#include <unistd.h>

#include "services/privileged/AnswerText.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

using Numbers = std::vector<dev_t>;

bool contains(const Numbers& numbers, dev_t number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

bool leadsTo(const std::string& link, const Numbers& numbers) {
    struct statx status {};
    constexpr int quietly = AT_STATX_DONT_SYNC | AT_NO_AUTOMOUNT;
    if (::statx(AT_FDCWD, link.c_str(), quietly, STATX_TYPE, &status) != 0) return false;
    if (contains(numbers, makedev(status.stx_dev_major, status.stx_dev_minor))) return true;
    return S_ISBLK(status.stx_mode) && contains(numbers, makedev(status.stx_rdev_major, status.stx_rdev_minor));
}

/// Names in a folder of /proc. Processes end while one looks: what can't be listed is empty.
std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        names.push_back(at->path().filename().string());
    }
    return names;
}

bool hasOpen(const std::string& process, const Numbers& numbers) {
    const std::string folder = process + "/fd/";
    const auto names = namesIn(folder);
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& name) { return leadsTo(folder + name, numbers); });
}

/// Whether word `field` (from 0) of any line in the file is one of the numbers as "major:minor" in `base`.
bool listsNumber(const std::string& file, int field, int base, const Numbers& numbers) {
    std::ifstream lines(file);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string word;
        for (int i = 0; i <= field; ++i)
            words >> word;
        const std::size_t colon = word.find(':');
        if (colon == std::string::npos) continue;
        unsigned majorNumber = 0;
        unsigned minorNumber = 0;
        const char* text = word.data();
        std::from_chars(text, text + colon, majorNumber, base);
        std::from_chars(text + colon + 1, text + word.size(), minorNumber, base);
        if (contains(numbers, makedev(majorNumber, minorNumber))) return true;
    }
    return false;
}

bool holds(const std::string& process, const Numbers& numbers) {
    for (const char* link : {"/cwd", "/root", "/exe"}) {
        if (leadsTo(process + link, numbers)) return true;
    }
    if (hasOpen(process, numbers)) return true;
    // proc(5): the fourth word of a line in maps is the device in hexadecimal, the third in mountinfo in decimal.
    if (listsNumber(process + "/maps", 3, 16, numbers)) return true;
    std::error_code error;
    const bool otherMounts = !fs::equivalent(process + "/ns/mnt", "/proc/self/ns/mnt", error) && !error;
    return otherMounts && listsNumber(process + "/mountinfo", 2, 10, numbers);
}

std::string nameOf(const std::string& process, const std::string& id) {
    std::ifstream file(process + "/comm");
    std::string name;
    std::getline(file, name);
    return shown(name, 40) + " (" + id + ")";
}

}  // namespace

std::string processesHolding(const std::vector<dev_t>& numbers) {
    constexpr std::size_t named = 3;
    std::size_t count = 0;
    std::string names;
    for (const std::string& id : namesIn("/proc")) {
        const std::string process = "/proc/" + id;
        if (!std::all_of(id.begin(), id.end(), [](unsigned char c) { return std::isdigit(c) != 0; })) continue;
        if (id == std::to_string(::getpid()) || !holds(process, numbers)) continue;
        if (++count <= named) names += (names.empty() ? "" : ", ") + nameOf(process, id);
    }
    if (count > named) names += " and " + std::to_string(count - named) + " others";
    return names;
}

}  // namespace kestrav
