#include <algorithm>
#include <new>

#include "base/stopProcess.h"
#include "device/DiskCalls.h"
#include "device/DiskNodes.h"
#include "device/KestravDevice.h"

namespace kestrav {

namespace {

// Owns an open node. A descriptor of 0 counts as a failure to open, yet it is closed like any other: it came from us.
class OpenNode {
  public:
    OpenNode(DiskCalls& disks, const std::string& path, DiskAccess access)
        : disks_(disks),
          descriptor_(disks.open(path, access)) {}
    ~OpenNode() {
        if (descriptor_ >= 0) disks_.close(descriptor_);
    }
    OpenNode(const OpenNode&) = delete;
    OpenNode& operator=(const OpenNode&) = delete;

    explicit operator bool() const { return descriptor_ > 0; }
    int descriptor() const { return descriptor_; }

  private:
    DiskCalls& disks_;
    int descriptor_;
};

// Zeros; empty if memory doesn't hold so many.
std::vector<std::byte> zeros(std::int64_t length) {
    try {
        return std::vector<std::byte>(static_cast<std::size_t>(length));
    } catch (const std::bad_alloc&) {
        return {};
    } catch (const std::length_error&) {
        return {};
    }
}

std::int64_t write(DiskCalls& disks, int descriptor, std::int64_t offset, std::int64_t length,
                   std::span<const std::byte> data) {
    // The system refuses a count that is negative once it is signed, so such a write fails without being tried.
    if (length < 0) return -1;
    const auto count = static_cast<std::size_t>(length);
    if (count <= data.size()) return disks.pwrite(descriptor, data.first(count), offset);
    std::vector<std::byte> padded = zeros(length);
    if (padded.empty()) return -1;
    std::copy(data.begin(), data.end(), padded.begin());
    return disks.pwrite(descriptor, padded, offset);
}

}  // namespace

std::vector<std::byte> KestravDevice::readDevice(std::int64_t offset, std::int64_t length) {
    if (detect(vendorID_, productID_) != 0) return {};
    if (!isReady()) return {};
    unmountFirstDrive();
    const std::string path = DiskNodes(device.bsdName).rawDisk;
    const OpenNode node(disks_, path, DiskAccess::readOnly);
    if (!node) {
        log("Unabled to open " + path);
        return {};
    }
    // A buffer of a negative size is the caller's mistake, and no result could stand for it.
    require(length >= 0);
    std::vector<std::byte> buffer = zeros(length);
    if (disks_.pread(node.descriptor(), buffer, offset) <= 0) return {};
    return buffer;
}

bool KestravDevice::writeDevice(std::int64_t offset, std::int64_t length, std::span<const std::byte> data) {
    detectOrForget();
    if (!isReady()) return false;
    unmountFirstDrive();
    const std::string path = DiskNodes(device.bsdName).blockDisk;
    const OpenNode node(disks_, path, DiskAccess::readAndWrite);
    if (!node) {
        log("Unabled to open " + path);
        return false;
    }
    return write(disks_, node.descriptor(), offset, length, data) > 0;
}

void KestravDevice::unmountFirstDrive() {
    const std::vector<std::string> drives = getDrives();
    if (!drives.empty()) disks_.unmount(drives.front());
}

}  // namespace kestrav
