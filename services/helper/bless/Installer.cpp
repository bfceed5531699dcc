#include "services/helper/bless/Installer.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/file.h>
#include <vector>

#include "services/helper/bless/HelperFiles.h"
#include "services/helper/bless/InstallError.h"
#include "services/helper/bless/RunningSystem.h"
#include "services/helper/bless/TrustedFolder.h"

namespace kestrav {
namespace {

/// Stands while files are exchanged and the running system does not know all of them yet. Found at the start, it tells
/// of an installation that was killed: then the system is told of files that look as if they had always been there.
const WantedFile kUnfinished{kHelperProgramFolder, ".com.corvatel.KestravHelper.unfinished", 0600, {}};

/// Held by one installer at a time, for as long as it lives.
UniqueFd lockInstallation() {
    UniqueFd folder = openTrustedFolder(kHelperProgramFolder, IfMissing::create);
    while (::flock(folder.get(), LOCK_EX) != 0) {
        if (errno != EINTR) throw systemFailure("Another installation can't be waited for");
    }
    return folder;
}

void put(const WantedFile& file) {
    StagedFile(file).putInPlace();
}

/// Exchanges what differs. All new files are complete on the disk before the first takes its place.
void exchange(const std::vector<WantedFile>& files) {
    std::vector<StagedFile> staged;
    staged.reserve(files.size());
    for (const WantedFile& file : files)
        staged.emplace_back(file);
    for (StagedFile& file : staged)
        file.putInPlace();
}

void tellRunningSystem() {
    reloadServiceUnits();
    reloadDeviceRules();
    reloadBus();
}

}  // namespace

std::string installHelper(const std::string& ownFolder) {
    const UniqueFd source = openTrustedFolder(ownFolder, IfMissing::giveUp);
    const auto wanted = helperFiles(readTrustedFile(source, "kestrav-helper", ownFolder + "/kestrav-helper"));
    const UniqueFd lock = lockInstallation();

    const bool programIsNew = !StagedFile::isInPlace(wanted.front());
    std::vector<WantedFile> changed;
    std::ranges::remove_copy_if(wanted, std::back_inserter(changed), StagedFile::isInPlace);
    if (changed.empty() && !StagedFile::isInPlace(kUnfinished)) return "The helper is installed already.";

    put(kUnfinished);
    exchange(changed);
    tellRunningSystem();
    // A helper that was running while its program was exchanged is the old one. After a killed installation nobody
    // knows which one runs, and ending an idle one costs nothing.
    if (programIsNew || changed.empty()) retireRunningHelper();
    StagedFile::remove(kUnfinished.folder, kUnfinished.name);
    return "The helper is installed.";
}

std::string uninstallHelper() {
    const UniqueFd lock = lockInstallation();
    auto files = helperFiles({});
    // What starts the helper goes first, so that nothing is started from half of an installation.
    std::ranges::reverse(files);
    files.push_back(rightFile());
    files.push_back(kUnfinished);
    bool any = false;
    for (const WantedFile& file : files)
        any = StagedFile::remove(file.folder, file.name) || any;
    if (!any) return "The helper is not installed.";
    tellRunningSystem();
    retireRunningHelper();
    return "The helper is uninstalled.";
}

std::string registerRight() {
    const UniqueFd lock = lockInstallation();
    const WantedFile right = rightFile();
    if (StagedFile::isInPlace(right)) return "The right is registered already.";
    put(right);
    // polkit watches the folder itself.
    return "The right is registered.";
}

}  // namespace kestrav
