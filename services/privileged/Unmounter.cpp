#include "services/privileged/Unmounter.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <thread>

#include "services/privileged/AnswerText.h"
#include "services/privileged/DiskHolders.h"

namespace kestrav {
namespace {

/// Desktops and virus scanners look at a fresh mount for a moment; a few tries spare the user a refusal.
constexpr int tries = 10;
constexpr std::chrono::milliseconds pause{100};

int unmount(const std::string& place) {
    for (int left = tries; left > 1; --left) {
        // The mount point itself is not followed as a link: its folder may belong to the user.
        if (::umount2(place.c_str(), UMOUNT_NOFOLLOW) == 0) return 0;
        if (errno != EBUSY) return errno;
        std::this_thread::sleep_for(pause);
    }
    return ::umount2(place.c_str(), UMOUNT_NOFOLLOW) == 0 ? 0 : errno;
}

Problem staysMounted(const std::string& place, int errorNumber, const std::vector<dev_t>& numbers,
                     const std::string& name) {
    std::string sentence = name + " is still mounted at " + shown(place) + ": " + systemWords(errorNumber);
    if (errorNumber != EBUSY) return refused(sentence + ".");
    const std::string holders = processesHolding(numbers);
    if (holders.empty()) return refused(sentence + ". Something may be mounted below it.");
    return refused(sentence + ". It is in use by " + holders + "; close that and try again.");
}

/// Another file system may hide the mount: it lies on top, and unmounting would hit it instead.
bool isHidden(const MountedPlace& place, dev_t number) {
    struct statx status {};
    // DONT_SYNC: what lies on top may be a user-space file system that never answers.
    constexpr int quietly = AT_STATX_DONT_SYNC | AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;
    if (::statx(AT_FDCWD, place.path.c_str(), quietly, STATX_TYPE, &status) != 0) return true;
    const bool ownNumber = makedev(status.stx_dev_major, status.stx_dev_minor) == number;
    // btrfs shows a number without a device (major 0), and was recognised by its source.
    return !ownNumber && (status.stx_dev_major != 0 || !place.numberless);
}

}  // namespace

Outcome<std::vector<std::string>> unmountAll(const MountTable& mounts, const std::vector<dev_t>& numbers,
                                             const std::string& name) {
    std::vector<std::string> done;
    for (const dev_t number : numbers) {
        for (const MountedPlace& place : mounts.placesOf(number)) {
            if (isHidden(place, number)) {
                return refused(name + " is mounted at " + shown(place.path) + ", where something else hides it.");
            }
            if (const int error = unmount(place.path); error != 0)
                return staysMounted(place.path, error, numbers, name);
            done.push_back(place.path);
        }
    }
    return done;
}

}  // namespace kestrav
