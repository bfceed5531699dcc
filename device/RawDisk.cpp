#include "device/RawDisk.h"

#include <algorithm>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>

#include "base/stopProcess.h"
#include "device/AccessoryFinder.h"
#include "device/DiskCalls.h"
#include "device/LogSink.h"
#include "device/listDrives.h"

namespace kestrav {

namespace {

// Owns an open node. Descriptor 0 counts as a failure to open, but it was opened here and so it is closed here.
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

    // frozen: F16
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
    // As a size_t a negative length would be a huge count, which the system refuses. The same result without the call.
    if (length < 0) return -1;
    const auto count = static_cast<std::size_t>(length);
    if (count <= data.size()) return disks.pwrite(descriptor, data.first(count), offset);
    // frozen: F20
    std::vector<std::byte> padded = zeros(length);
    if (padded.empty()) return -1;
    std::copy(data.begin(), data.end(), padded.begin());
    return disks.pwrite(descriptor, padded, offset);
}

}  // namespace

RawDisk::RawDisk(AccessoryFinder& finder, MountedVolumes& volumes, DiskCalls& disks, LogSink& log)
    : finder_(finder),
      volumes_(volumes),
      disks_(disks),
      log_(log) {}

std::vector<std::byte> RawDisk::readDevice(std::int64_t offset, std::int64_t length) {
    // frozen: F18
    if (finder_.detectAccessory() != 0) return {};
    const std::optional<DiskNodes> nodes = finder_.nodesOrLogNotReady();
    if (!nodes) return {};
    unmountFirstDrive();
    // frozen: F17
    const OpenNode node(disks_, nodes->rawDisk, DiskAccess::readOnly);
    if (!node) {
        // frozen: F1
        log_.log("Unabled to open " + nodes->rawDisk);
        return {};
    }
    // A negative length is a mistake in the calling code, so it is not reported as a failed read.
    require(length >= 0);
    std::vector<std::byte> buffer = zeros(length);
    // frozen: F19, F21
    if (disks_.pread(node.descriptor(), buffer, offset) <= 0) return {};
    return buffer;
}

bool RawDisk::writeDevice(std::int64_t offset, std::int64_t length, std::span<const std::byte> data) {
    // frozen: F18
    finder_.detectAccessoryOrForgetIt();
    const std::optional<DiskNodes> nodes = finder_.nodesOrLogNotReady();
    if (!nodes) return false;
    unmountFirstDrive();
    // frozen: F17
    const OpenNode node(disks_, nodes->blockDisk, DiskAccess::readAndWrite);
    if (!node) {
        // frozen: F1
        log_.log("Unabled to open " + nodes->blockDisk);
        return false;
    }
    // frozen: F19, F21
    return write(disks_, node.descriptor(), offset, length, data) > 0;
}

void RawDisk::unmountFirstDrive() {
    const std::vector<std::string> drives = listDrives(volumes_, log_);
    // frozen: F14
    if (!drives.empty()) disks_.unmount(drives.front());
}

}  // namespace kestrav
