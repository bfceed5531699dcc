#include "services/disk/openDisk.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <thread>

#include "base/UniqueFd.h"
#include "base/shownText.h"
#include "base/systemProblem.h"
#include "base/systemWords.h"
#include "services/disk/NodeBytes.h"
#include "services/disk/kernelUsersOf.h"
#include "services/disk/processesHolding.h"

namespace kestrav {
namespace {

using Clock = std::chrono::steady_clock;

// A write that was just ended, and udev's look at the disk after it, are over by then.
constexpr std::chrono::milliseconds kPatience{2000};
constexpr std::chrono::milliseconds kPauseBetweenTries{20};

int openOnce(const std::string& path, int flags) {
    int node = ::open(path.c_str(), flags | O_DIRECT);
    // Not every node takes direct access; the system's cache is the other way.
    if (node < 0 && errno == EINVAL) node = ::open(path.c_str(), flags);
    return node;
}

/// Opens and locks, both or nothing; the cause is EBUSY for a disk in use.
Outcome<UniqueFd> openAndLock(const std::string& path, DiskUse use) {
    const bool write = use == DiskUse::write;
    const int flags = (write ? O_RDWR | O_EXCL : O_RDONLY) | O_NOFOLLOW | O_CLOEXEC;
    UniqueFd node(openOnce(path, flags));
    if (!node) return systemProblem(errno);
    if (::flock(node.get(), (write ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0) {
        return systemProblem(errno == EWOULDBLOCK ? EBUSY : errno);
    }
    return node;
}

bool isBusy(const Outcome<UniqueFd>& node) {
    return !node && node.problem().cause == std::errc::device_or_resource_busy;
}

/// The disk and its partitions, as far as they can be told.
std::vector<dev_t> familyOf(const BlockDevices& devices, const BlockDevice& disk) {
    const auto family = devices.diskAndPartitions(disk.number);
    return family ? family.value() : std::vector<dev_t>{disk.number};
}

Problem inUse(const BlockDevices& devices, const BlockDevice& disk) {
    const auto numbers = familyOf(devices, disk);
    std::string users = processesHolding(numbers);
    for (const std::string& user : kernelUsersOf(numbers))
        users += (users.empty() ? "" : ", ") + user;
    for (const std::string& device : devices.builtOnTopOf(disk.number))
        users += (users.empty() ? "" : ", ") + shownText(device, 120);
    if (users.empty()) users = "another program";
    return refused("the disk " + disk.name + " is in use by " + users + "; wait until that is done and try again.");
}

Problem cannotOpen(int errorNumber, const BlockDevice& disk) {
    if (errorNumber == EROFS) return refused("the disk " + disk.name + " is write-protected.");
    if (errorNumber == ELOOP) return refused("the disk " + disk.name + " was replaced by a link.");
    return refused("the disk " + disk.name + " can't be opened: " + systemWords(errorNumber) + ".");
}

/// The kernel's own word on which disk the descriptor is; nothing where it doesn't tell.
std::optional<std::uint64_t> diskSequence(int node) {
    std::uint64_t number = 0;
    if (::ioctl(node, BLKGETDISKSEQ, &number) != 0) return std::nullopt;
    return number;
}

/// Is the node that the path names the one that is open, and has it the judged number?
bool isSameNode(const AccessoryNode& judged, int node) {
    struct stat opened {};
    struct stat named {};
    if (::fstat(node, &opened) != 0 || ::stat(judged.path.c_str(), &named) != 0) return false;
    if (opened.st_dev != named.st_dev || opened.st_ino != named.st_ino) return false;
    if (!S_ISBLK(named.st_mode) || named.st_rdev != judged.device.number) return false;
    return !S_ISBLK(opened.st_mode) || opened.st_rdev == judged.device.number;
}

/// Is the disk behind the judged number, now that the node is open, still the judged one?
bool isSameDisk(const BlockDevice& now, const BlockDevice& judged, int node) {
    if (!now.accessory || now.kind != judged.kind || now.name != judged.name) return false;
    if (now.diskSequence != judged.diskSequence || now.bytes != judged.bytes) return false;
    const auto sequence = diskSequence(node);
    return !sequence || !now.diskSequence || *sequence == *now.diskSequence;
}

}  // namespace

Outcome<std::unique_ptr<DiskBytes>> openDisk(const BlockDevices& devices, const AccessoryNode& disk, DiskUse use) {
    // A loop device on the disk keeps nobody from opening it, and has a memory of its own of what is on it.
    if (use == DiskUse::write && !kernelUsersOf(familyOf(devices, disk.device)).empty()) {
        return inUse(devices, disk.device);
    }
    // The kernel opens such a disk for writing and refuses the writes.
    if (use == DiskUse::write && disk.device.writeProtected) return cannotOpen(EROFS, disk.device);
    const auto end = Clock::now() + kPatience;
    auto node = openAndLock(disk.path, use);
    while (isBusy(node) && Clock::now() < end) {
        std::this_thread::sleep_for(kPauseBetweenTries);
        node = openAndLock(disk.path, use);
    }
    if (isBusy(node)) return inUse(devices, disk.device);
    if (!node) return cannotOpen(node.problem().cause.value(), disk.device);
    const Problem exchanged = refused("another disk took the place of " + disk.device.name + " meanwhile.");
    if (!isSameNode(disk, node.value().get())) return exchanged;
    const auto now = devices.find(disk.device.number);
    if (!now) return now.problem();
    if (!isSameDisk(now.value(), disk.device, node.value().get())) return exchanged;
    return std::unique_ptr<DiskBytes>(
        std::make_unique<NodeBytes>(std::move(node.value()), disk.device.bytes, disk.device.logicalBlockSize));
}

}  // namespace kestrav
