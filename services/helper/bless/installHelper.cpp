#include "services/helper/bless/installHelper.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <optional>
#include <utility>
#include <vector>

#include "base/shownText.h"
#include "protocol/names.h"
#include "services/helper/bless/HeldSignals.h"
#include "services/helper/bless/helperFiles.h"
#include "services/helper/bless/lockInstallation.h"
#include "services/helper/bless/openTrustedFolder.h"
#include "services/helper/bless/runningSystem.h"

namespace kestrav {
namespace {

/// Stands while files are exchanged and the running system does not know all of them yet. Found at the start, it tells
/// of an installation that was killed: then the system is told of files that look as if they had always been there.
const WantedFile kUnfinished{kHelperProgramFolder, std::string(".") + kHelperLabel + ".unfinished", 0600, {}};

/// How long another installation may take. Its longest part is the running system that reads its files anew.
constexpr std::chrono::minutes kPatience{4};

/// Exchanges files. All new ones are complete on the disk before the first takes its place; where one can't be made, or
/// the program is told to end before, none is exchanged and none of the new ones stays.
Outcome<void> exchange(const std::vector<WantedFile>& files) {
    const HeldSignals signals;  // goes last, when the new files have gone
    std::vector<StagedFile> staged;
    for (const WantedFile& file : files) {
        auto next = file.stage();
        if (!next) return next.problem();
        staged.push_back(std::move(next.value()));
        if (signals.endIsNear()) return refused("The installer was told to end. Nothing was changed.");
    }
    for (std::size_t index = 0; index < files.size(); ++index) {
        if (auto placed = files[index].putInPlace(std::move(staged[index])); !placed) return placed;
    }
    return {};
}

Outcome<void> tellRunningSystem() {
    if (auto told = reloadServiceUnits(); !told) return told;
    if (auto told = reloadDeviceRules(); !told) return told;
    return reloadBus();
}

Outcome<std::vector<WantedFile>> wantedFiles(const std::string& ownFolder) {
    const auto source = openTrustedFolder(ownFolder, IfMissing::giveUp);
    if (!source) return source.problem();
    auto program = readTrustedFile(source.value(), "kestrav-helper", ownFolder + "/kestrav-helper");
    if (!program) return program.problem();
    return helperFiles(std::move(program.value()));
}

/// Those that are not in place.
Outcome<std::vector<WantedFile>> changedAmong(const std::vector<WantedFile>& wanted) {
    std::vector<WantedFile> changed;
    for (const WantedFile& file : wanted) {
        const auto inPlace = file.isInPlace();
        if (!inPlace) return inPlace.problem();
        if (!inPlace.value()) changed.push_back(file);
    }
    return changed;
}

/// The files that are not in place; empty where an installation that was killed has only to be finished. None where
/// there is nothing to do. The mark is looked for last: it goes when everything is done.
Outcome<std::optional<std::vector<WantedFile>>> workAmong(const std::vector<WantedFile>& wanted) {
    auto changed = changedAmong(wanted);
    if (!changed) return changed.problem();
    const auto unfinished = changed.value().empty() ? kUnfinished.isInPlace() : true;
    if (!unfinished) return unfinished.problem();
    if (!unfinished.value()) return std::optional<std::vector<WantedFile>>();
    return std::optional(std::move(changed.value()));
}

/// All that the installer ever puts anywhere. What starts the helper goes first, so that nothing is started from half
/// of an installation.
std::vector<WantedFile> everyFile() {
    auto files = helperFiles({});
    std::ranges::reverse(files);
    files.push_back(rightFile());
    files.push_back(rightFileBesideAnImage());
    files.push_back(kUnfinished);
    return files;
}

Outcome<bool> anythingToRemove() {
    for (const WantedFile& file : everyFile()) {
        auto there = file.isThere();
        if (!there || there.value()) return there;
    }
    return false;
}

/// Puts the files in place and has the running system know them.
Outcome<void> install(const std::vector<WantedFile>& changed) {
    std::vector<WantedFile> files{kUnfinished};
    files.insert(files.end(), changed.begin(), changed.end());
    if (auto exchanged = exchange(files); !exchanged) return exchanged;
    if (auto told = tellRunningSystem(); !told) return told;
    // A helper that was running while its program was exchanged is the old one. After a killed installation nobody
    // knows which one runs, and ending an idle one costs nothing.
    if (changed.empty() || changed.front().folder == kHelperProgramFolder) retireRunningHelper();
    if (const auto removed = kUnfinished.remove(); !removed) return removed.problem();
    return {};
}

bool readsEtc(const std::string& polkitVersion) {
    int number = 0;
    std::from_chars(polkitVersion.data(), polkitVersion.data() + polkitVersion.size(), number);
    return number >= kPolkitThatReadsEtc;
}

/// Whether polkit knows the right from one of the places where it looks.
Outcome<bool> isRightRegistered() {
    auto inPlace = rightFile().isInPlace();
    if (!inPlace || inPlace.value()) return inPlace;
    inPlace = rightFileBesideAnImage().isInPlace();
    if (!inPlace || !inPlace.value()) return inPlace;
    return readsEtc(runningPolkitVersion());
}

Outcome<void> putRightBesideImage() {
    const std::string version = runningPolkitVersion();
    if (readsEtc(version)) return exchange({rightFileBesideAnImage()});
    return refused(
        "The folder " + rightFile().folder + " is read-only, and polkit " +
        (version.empty() ? "does not answer" : "(version " + shownText(version, 40) + ") looks nowhere else") +
        ". Make the folder writable, or use polkit " + std::to_string(kPolkitThatReadsEtc) + " or later.");
}

}  // namespace

Outcome<std::string> installHelper(const std::string& ownFolder) {
    const auto wanted = wantedFiles(ownFolder);
    if (!wanted) return wanted.problem();
    // Where nothing is to be done, nobody has to be waited for: an installation that runs leaves its mark first.
    auto work = workAmong(wanted.value());
    if (!work) return work.problem();
    if (!work.value()) return std::string("The helper is installed already.");
    const auto lock = lockInstallation(kPatience);
    if (!lock) return lock.problem();
    work = workAmong(wanted.value());
    if (!work) return work.problem();
    if (!work.value()) return std::string("The helper is installed already.");
    if (const auto installed = install(*work.value()); !installed) return installed.problem();
    return std::string("The helper is installed.");
}

Outcome<std::string> uninstallHelper() {
    const auto anything = anythingToRemove();
    if (!anything) return anything.problem();
    if (!anything.value()) return std::string("The helper is not installed.");
    const auto lock = lockInstallation(kPatience);
    if (!lock) return lock.problem();
    bool any = false;
    for (const WantedFile& file : everyFile()) {
        const auto removed = file.remove();
        if (!removed) return removed.problem();
        any = removed.value() || any;
    }
    if (!any) return std::string("The helper is not installed.");
    if (const auto told = tellRunningSystem(); !told) return told.problem();
    retireRunningHelper();
    return std::string("The helper is uninstalled.");
}

Outcome<std::string> registerRight() {
    const auto registered = isRightRegistered();
    if (!registered) return registered.problem();
    if (registered.value()) return std::string("The right is registered already.");
    const auto lock = lockInstallation(kPatience);
    if (!lock) return lock.problem();
    // polkit watches the folders itself.
    auto put = exchange({rightFile()});
    if (!put && put.problem().cause == std::errc::read_only_file_system) put = putRightBesideImage();
    if (!put) return put.problem();
    return std::string("The right is registered.");
}

}  // namespace kestrav
