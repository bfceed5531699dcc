#include "services/disk/kernelUsersOf.h"

#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/shownText.h"
#include "services/disk/MountinfoLine.h"
#include "services/disk/forEachLine.h"
#include "services/disk/leadsToDevice.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

void addLoops(const std::vector<dev_t>& numbers, std::vector<std::string>& users) {
    std::error_code error;
    for (fs::directory_iterator at("/sys/block", error), end; !error && at != end; at.increment(error)) {
        // The file by its name: the loop device itself is not to be opened for this.
        forEachLine(at->path() / "loop/backing_file", [&](std::string_view file) {
            if (leadsToDevice(std::string(file), numbers))
                users.push_back(at->path().filename().string() + " (" + shownText(file, 120) + ")");
            return false;
        });
    }
}

/// proc(5): a line for each, its file's name in front, blanks in it written as in mountinfo.
void addSwap(const std::vector<dev_t>& numbers, std::vector<std::string>& users) {
    forEachLine("/proc/swaps", [&](std::string_view line) {
        const std::string file = MountinfoLine::unescaped(line.substr(0, line.find_first_of(" \t")));
        if (file.starts_with('/') && leadsToDevice(file, numbers))
            users.push_back("the swap space " + shownText(file, 120));
        return true;
    });
}

}  // namespace

std::vector<std::string> kernelUsersOf(const std::vector<dev_t>& numbers) {
    std::vector<std::string> users;
    addLoops(numbers, users);
    addSwap(numbers, users);
    return users;
}

}  // namespace kestrav
