#include "tests/services/LoopDisk.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/blkpg.h>
#include <linux/loop.h>
#include <sched.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "base/retry.h"
#include "tests/TemporaryFolder.h"

namespace kestrav {
namespace {

constexpr int loopMajor = 7;
constexpr long long partitionStart = 2048LL * 512;

void check(bool good, const char* what) {
    if (!good) throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
}

/// Of a file or of another disk.
long long sizeOf(int descriptor) {
    const off_t end = ::lseek(descriptor, 0, SEEK_END);
    check(end >= 0, "size of the image");
    return end;
}

dev_t numberIn(const std::filesystem::path& sysfs) {
    const std::string text = contentsOf(sysfs / "dev");
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) throw std::runtime_error("no device at " + sysfs.string());
    return makedev(static_cast<unsigned>(std::stoul(text)), static_cast<unsigned>(std::stoul(text.substr(colon + 1))));
}

/// A node of this object's own, because /dev may be a private one.
UniqueFd openLoop(dev_t number, int flags) {
    const std::string path = "/tmp/kestrav-loop-" + std::to_string(::getpid());
    ::unlink(path.c_str());
    check(::mknod(path.c_str(), S_IFBLK | 0600, number) == 0, "mknod");
    UniqueFd node(::open(path.c_str(), flags | O_CLOEXEC));
    ::unlink(path.c_str());
    check(static_cast<bool>(node), "open loop device");
    return node;
}

int freeLoop() {
    const std::string path = "/tmp/kestrav-loop-control-" + std::to_string(::getpid());
    ::unlink(path.c_str());
    check(::mknod(path.c_str(), S_IFCHR | 0600, makedev(10, 237)) == 0, "mknod");
    const UniqueFd control(::open(path.c_str(), O_RDWR | O_CLOEXEC));
    ::unlink(path.c_str());
    check(static_cast<bool>(control), "open loop-control");
    const int index = ::ioctl(control.get(), LOOP_CTL_GET_FREE);
    check(index >= 0, "LOOP_CTL_GET_FREE");
    return index;
}

UniqueFd onlyTaker() {
    UniqueFd lock(::open(kLoopLock, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    check(static_cast<bool>(lock), "open the lock of the loop devices");
    check(retry([&] { return ::flock(lock.get(), LOCK_EX); }) == 0, "lock the loop devices");
    return lock;
}

}  // namespace

LoopDisk::LoopDisk(const std::filesystem::path& image, const Shape& shape) : shape_(shape) {
    attach(image);
}

LoopDisk::~LoopDisk() {
    detach();
}

dev_t LoopDisk::partitionNumber() const {
    return numberIn("/sys/block/" + name_ + "/" + partitionName());
}

void LoopDisk::swapFor(const std::filesystem::path& image) {
    detach();
    attach(image);
}

void LoopDisk::attach(const std::filesystem::path& image) {
    const bool readOnly = shape_.isReadOnly;
    const UniqueFd file(::open(image.c_str(), (readOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC));
    check(static_cast<bool>(file), "open image");
    loop_config config{};
    config.fd = static_cast<unsigned>(file.get());
    config.block_size = shape_.blockBytes;
    config.info.lo_flags = readOnly ? LO_FLAGS_PARTSCAN | LO_FLAGS_READ_ONLY : LO_FLAGS_PARTSCAN;
    const UniqueFd alone = onlyTaker();
    // Whoever is no test may take the free one first.
    for (int tries = 50;; --tries) {
        const int index = number_ == 0 ? freeLoop() : static_cast<int>(minor(number_));
        name_ = "loop" + std::to_string(index);
        number_ = makedev(loopMajor, static_cast<unsigned>(index));
        const UniqueFd loop = openLoop(number_, readOnly ? O_RDONLY : O_RDWR);
        if (::ioctl(loop.get(), LOOP_CONFIGURE, &config) == 0) break;
        check(errno == EBUSY && tries > 0, "LOOP_CONFIGURE");
        ::usleep(100'000);
        number_ = 0;
    }
    const UniqueFd loop = openLoop(number_, O_RDONLY);
    blkpg_partition partition{};
    partition.start = partitionStart;
    partition.length = sizeOf(file.get()) - partitionStart;
    partition.pno = 1;
    blkpg_ioctl_arg argument{BLKPG_ADD_PARTITION, 0, sizeof partition, &partition};
    check(::ioctl(loop.get(), BLKPG, &argument) == 0, "BLKPG_ADD_PARTITION");
}

void LoopDisk::detach() {
    // A program that was killed holds it for a moment more.
    for (int tries = 50; tries > 0; --tries) {
        const UniqueFd loop = openLoop(number_, O_RDONLY);
        blkpg_partition partition{};
        partition.pno = 1;
        blkpg_ioctl_arg argument{BLKPG_DEL_PARTITION, 0, sizeof partition, &partition};
        const bool gone = ::ioctl(loop.get(), BLKPG, &argument) == 0 || errno == ENXIO;
        if (gone && ::ioctl(loop.get(), LOOP_CLR_FD) == 0) return;
        ::usleep(20'000);
    }
}

void enterPrivateMounts() {
    check(::unshare(CLONE_NEWNS) == 0, "unshare");
    check(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "private mounts");
    check(::mount("tmpfs", "/dev", "tmpfs", 0, "mode=755") == 0, "private /dev");
    check(::mknod("/dev/null", S_IFCHR | 0666, makedev(1, 3)) == 0, "mknod /dev/null");
    check(::mknod("/dev/urandom", S_IFCHR | 0666, makedev(1, 9)) == 0, "mknod /dev/urandom");
}

std::string makeNode(const std::string& path, dev_t number) {
    ::unlink(path.c_str());
    check(::mknod(path.c_str(), S_IFBLK | 0600, number) == 0, "mknod node");
    return path;
}

}  // namespace kestrav
