#include "services/helper/bless/WantedFile.h"

#include <cerrno>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "base/systemProblem.h"
#include "services/helper/bless/openTrustedFolder.h"

namespace kestrav {
namespace {

bool exists(const UniqueFd& folder, const std::string& name) {
    struct stat status {};
    return ::fstatat(folder.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 || errno != ENOENT;
}

/// The problem, in words that help where the place is on a file system that is never written to.
Problem orReadOnly(const Problem& problem, const std::string& folder) {
    if (problem.cause != std::errc::read_only_file_system) return problem;
    return refused("The folder " + folder +
                       " is read-only, so nothing can be installed there. Make it writable; where /usr is an image, "
                       "/usr/local can be a link to a folder of root's that is writable.",
                   problem.cause);
}

}  // namespace

Outcome<bool> WantedFile::isInPlace() const {
    const auto opened = openTrustedFolder(folder, IfMissing::doWithout);
    if (!opened) return opened.problem();
    struct stat status {};
    if (!opened.value() || ::fstatat(opened.value().get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return false;
    }
    // A second name would let somebody keep today's file for tomorrow.
    const bool ours = S_ISREG(status.st_mode) && status.st_uid == 0 && status.st_gid == 0 && status.st_nlink == 1 &&
                      (status.st_mode & 07777) == mode && status.st_size == static_cast<off_t>(bytes.size());
    if (!ours) return false;
    const auto found = readTrustedFile(opened.value(), name, path());
    if (!found) return found.problem();
    return found.value() == bytes;
}

Outcome<StagedFile> WantedFile::stage() const {
    auto opened = openTrustedFolder(folder, IfMissing::create);
    if (!opened) return orReadOnly(opened.problem(), folder);
    auto staged = StagedFile::in(std::move(opened.value()), name);
    if (!staged) {
        return orReadOnly(systemProblem("A file can't be made in " + folder, staged.problem().cause.value()), folder);
    }
    const std::string cannotBeWritten = "The file " + path() + " can't be written";
    if (::fchown(staged.value().descriptor(), 0, 0) != 0) return systemProblem(cannotBeWritten);
    const auto filled = staged.value().fill(std::as_bytes(std::span(bytes)), mode);
    if (!filled) return systemProblem(cannotBeWritten, filled.problem().cause.value());
    return staged;
}

Outcome<void> WantedFile::putInPlace(StagedFile staged) const {
    if (const auto placed = staged.putInPlace(); !placed) {
        return systemProblem("The file " + path() + " can't be put in its place", placed.problem().cause.value());
    }
    if (::fsync(staged.folder().get()) != 0) return systemProblem("The folder of " + path() + " can't be written");
    return {};
}

Outcome<bool> WantedFile::isThere() const {
    const auto opened = openTrustedFolder(folder, IfMissing::doWithout);
    if (!opened) return opened.problem();
    if (!opened.value()) return false;
    return exists(opened.value(), name) || exists(opened.value(), StagedFile::temporaryName(name));
}

Outcome<bool> WantedFile::remove() const {
    const auto opened = openTrustedFolder(folder, IfMissing::doWithout);
    if (!opened) return opened.problem();
    if (!opened.value()) return false;
    bool any = false;
    for (const std::string& each : {name, StagedFile::temporaryName(name)}) {
        // Looked for first: a file system that is read-only refuses to remove even what isn't there.
        if (!exists(opened.value(), each)) continue;
        if (::unlinkat(opened.value().get(), each.c_str(), 0) != 0) {
            return systemProblem("The file " + folder + "/" + each + " can't be removed");
        }
        any = true;
    }
    if (any && ::fsync(opened.value().get()) != 0) return systemProblem("The folder " + folder + " can't be written");
    return any;
}

}  // namespace kestrav
