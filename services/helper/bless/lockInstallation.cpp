#include "services/helper/bless/lockInstallation.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

#include "base/retry.h"
#include "base/systemProblem.h"
#include "services/helper/bless/openTrustedFolder.h"

namespace kestrav {
namespace {

std::string lockPath() {
    return std::string(kInstallationLockFolder) + "/" + kInstallationLockName;
}

bool isRootsAlone(const struct stat& status) {
    return S_ISREG(status.st_mode) && status.st_uid == 0 && (status.st_mode & 07777) == 0600 && status.st_nlink == 1;
}

Outcome<UniqueFd> openLock() {
    const auto folder = openTrustedFolder(kInstallationLockFolder, IfMissing::create);
    if (!folder) return folder.problem();
    // O_NONBLOCK: a pipe in the file's place is told apart below instead of being waited for.
    constexpr int kFlags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    UniqueFd file(::openat(folder.value().get(), kInstallationLockName, kFlags, 0600));
    struct stat status {};
    const bool opened = file && ::fstat(file.get(), &status) == 0;
    if (!opened && errno != ELOOP && errno != EISDIR && errno != ENXIO) {
        return systemProblem("The file " + lockPath() + " can't be opened");
    }
    if (opened && isRootsAlone(status)) return file;
    return refused("The file " + lockPath() + " is not the installer's own, so others may hold it. Remove it.");
}

}  // namespace

Outcome<UniqueFd> lockInstallation(std::chrono::milliseconds patience) {
    constexpr std::chrono::milliseconds kBetweenTries{50};
    auto file = openLock();
    if (!file) return file;
    const auto end = std::chrono::steady_clock::now() + patience;
    // The system knows no waiting for a lock that comes to an end by itself.
    while (retry([&] { return ::flock(file.value().get(), LOCK_EX | LOCK_NB); }) != 0) {
        if (errno != EWOULDBLOCK) return systemProblem("Another installation can't be waited for");
        if (std::chrono::steady_clock::now() >= end) {
            return refused("Another installation has been running for minutes. Try again when it has ended.");
        }
        std::this_thread::sleep_for(kBetweenTries);
    }
    return file;
}

}  // namespace kestrav
