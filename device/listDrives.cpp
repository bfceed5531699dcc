#include "device/listDrives.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "device/LogSink.h"
#include "device/MountedVolumes.h"

namespace kestrav {

namespace {

// Whole components only: /mediawiki is not in /media, but /media itself counts.
bool isIn(std::string_view path, std::string_view folder) {
    // frozen: F15
    return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

}  // namespace

std::vector<std::string> listDrives(MountedVolumes& volumes, LogSink& log) {
    const std::optional<std::vector<std::string>> mounted = volumes.mountPoints();
    std::vector<std::string> drives;
    if (!mounted) return drives;
    const std::vector<std::string> folders = volumes.volumesFolders();
    for (const std::string& path : *mounted) {
        const auto holds = [&path](const std::string& folder) { return isIn(path, folder); };
        if (std::none_of(folders.begin(), folders.end(), holds)) continue;
        log.log("Found drive: " + path);
        drives.push_back(path);
    }
    return drives;
}

}  // namespace kestrav
