#include "services/privileged/OpenDisk.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <thread>

#include "base/UniqueFd.h"
#include "services/privileged/AnswerText.h"
#include "services/privileged/DiskHolders.h"
#include "services/privileged/NodeBytes.h"

namespace kestrav {
namespace {

using Clock = std::chrono::steady_clock;

// A write that was just ended, and udev's look at the disk after it, are over by then.
constexpr std::chrono::milliseconds patience{2000};
constexpr std::chrono::milliseconds pauseBetweenTries{20};

int openOnce(const std::string& path, int flags) {
    int node = ::open(path.c_str(), flags | O_DIRECT);
    // Not every node takes direct access; the system's cache is the other way.
    if (node < 0 && errno == EINVAL) node = ::open(path.c_str(), flags);
    return node;
}

/// Opens and locks, both or nothing. Returns the error number in errno's terms; EBUSY for a disk in use.
int openAndLock(const std::string& path, DiskUse use, UniqueFd& node) {
    const bool write = use == DiskUse::write;
    const int flags = (write ? O_RDWR | O_EXCL : O_RDONLY) | O_NOFOLLOW | O_CLOEXEC;
    node.reset(openOnce(path, flags));
    if (!node) return errno;
    if (::flock(node.get(), (write ? LOCK_EX : LOCK_SH) | LOCK_NB) == 0) return 0;
    const int error = errno;
    node.reset();
    return error == EWOULDBLOCK ? EBUSY : error;
}

Problem inUse(const BlockDevices& devices, const BlockDevice& disk) {
    const auto family = devices.diskAndPartitions(disk.number);
    std::string users = processesHolding(family ? family.value() : std::vector<dev_t>{disk.number});
    for (const std::string& device : devices.builtOnTopOf(disk.number)) {
        users += (users.empty() ? "" : ", ") + shown(device, 40);
    }
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
    // The kernel opens such a disk for writing and refuses the writes.
    if (use == DiskUse::write && disk.device.writeProtected) return cannotOpen(EROFS, disk.device);
    UniqueFd node;
    const auto end = Clock::now() + patience;
    int error = openAndLock(disk.path, use, node);
    while (error == EBUSY && Clock::now() < end) {
        std::this_thread::sleep_for(pauseBetweenTries);
        error = openAndLock(disk.path, use, node);
    }
    if (error == EBUSY) return inUse(devices, disk.device);
    if (error != 0) return cannotOpen(error, disk.device);
    const Problem exchanged = refused("another disk took the place of " + disk.device.name + " meanwhile.");
    if (!isSameNode(disk, node.get())) return exchanged;
    const auto now = devices.find(disk.device.number);
    if (!now) return now.problem();
    if (!isSameDisk(now.value(), disk.device, node.get())) return exchanged;
    return std::unique_ptr<DiskBytes>(
        std::make_unique<NodeBytes>(std::move(node), disk.device.bytes, disk.device.logicalBlockSize));
}

}  // namespace kestrav
