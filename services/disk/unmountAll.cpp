#include "services/disk/unmountAll.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <thread>
#include <utility>

#include "base/UniqueFd.h"
#include "base/shownText.h"
#include "base/systemProblem.h"
#include "base/systemWords.h"
#include "services/disk/kernelUsersOf.h"
#include "services/disk/mountsBelow.h"
#include "services/disk/processesHolding.h"

namespace kestrav {
namespace {

/// Desktops and virus scanners look at a fresh mount for a moment; a few tries spare the user a refusal.
constexpr int kTries = 10;
constexpr std::chrono::milliseconds kPause{100};

/// A mount point by its name within the folder that it lies in. Whoever owns a folder on the way can put another one in
/// its place meanwhile; the opened one stays the same. The mount point itself isn't opened: that would keep it in use.
struct HeldPlace {
    UniqueFd folder;
    std::string name;

    std::string path() const { return "/proc/self/fd/" + std::to_string(folder.get()) + "/" + name; }
};

Outcome<HeldPlace> hold(const std::string& place) {
    const std::size_t slash = place.rfind('/');
    std::string name = slash + 1 < place.size() ? place.substr(slash + 1) : ".";
    UniqueFd folder(::open(place.substr(0, slash + 1).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder) return refused("the folder of the mount point can't be opened: " + systemWords(errno) + ".");
    return HeldPlace{std::move(folder), std::move(name)};
}

Outcome<void> unmount(const HeldPlace& place) {
    const std::string path = place.path();
    // The mount point itself is not followed as a link: its folder may belong to the user.
    for (int left = kTries; ::umount2(path.c_str(), UMOUNT_NOFOLLOW) != 0; --left) {
        if (errno != EBUSY || left <= 1) return systemProblem(errno);
        std::this_thread::sleep_for(kPause);
    }
    return {};
}

std::string listOf(const std::vector<std::string>& names, const char* between) {
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : between) + name;
    return list;
}

std::vector<std::string> holdersOf(const std::vector<dev_t>& numbers) {
    auto holders = kernelUsersOf(numbers);
    if (std::string processes = processesHolding(numbers); !processes.empty()) {
        holders.insert(holders.begin(), std::move(processes));
    }
    return holders;
}

Problem staysMounted(const std::string& place, const Problem& why, const std::vector<dev_t>& numbers,
                     const std::string& name) {
    std::string sentence = name + " is still mounted at " + shownText(place) + ": " + why.sentence;
    if (why.cause != std::errc::device_or_resource_busy) return refused(sentence);
    auto below = mountsBelow(place, numbers);
    std::ranges::transform(below, below.begin(), [](const std::string& path) { return shownText(path); });
    const auto holders = holdersOf(numbers);
    if (!below.empty()) sentence += " Below it is mounted: " + listOf(below, " and ") + "; unmount that first.";
    if (!holders.empty()) sentence += " It is in use by " + listOf(holders, ", ") + "; close that and try again.";
    if (below.empty() && holders.empty()) sentence += " Something may be mounted below it.";
    return refused(sentence);
}

/// Another file system may hide the mount: it lies on top, and unmounting would hit it instead.
bool isHidden(const HeldPlace& held, bool numberless, dev_t number) {
    struct statx status {};
    // DONT_SYNC: what lies on top may be a user-space file system that never answers.
    constexpr int kQuietly = AT_STATX_DONT_SYNC | AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT;
    if (::statx(held.folder.get(), held.name.c_str(), kQuietly, STATX_TYPE, &status) != 0) return true;
    const bool ownNumber = makedev(status.stx_dev_major, status.stx_dev_minor) == number;
    // btrfs shows a number without a device (major 0), and was recognised by its source.
    return !ownNumber && (status.stx_dev_major != 0 || !numberless);
}

}  // namespace

Outcome<std::vector<std::string>> unmountAll(const MountTable& mounts, const std::vector<dev_t>& numbers,
                                             const std::string& name) {
    std::vector<std::string> done;
    for (const dev_t number : numbers) {
        const auto places = mounts.placesOf(number);
        if (!places) return places.problem();
        for (const MountedPlace& place : places.value()) {
            const auto held = hold(place.path);
            const std::string mounted = name + " is mounted at " + shownText(place.path);
            if (!held) return refused(mounted + ", and " + held.problem().sentence);
            if (isHidden(held.value(), place.numberless, number)) {
                return refused(mounted + ", where something else hides it.");
            }
            if (const auto unmounted = unmount(held.value()); !unmounted) {
                return staysMounted(place.path, unmounted.problem(), numbers, name);
            }
            done.push_back(place.path);
        }
    }
    return done;
}

}  // namespace kestrav
