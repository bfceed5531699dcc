#include "cli/verifyImage.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <string>
#include <vector>

#include "base/systemWords.h"
#include "cli/OrdinaryFile.h"
#include "device/DiskCalls.h"
#include "device/DiskNodes.h"
#include "protocol/accessory.h"

namespace kestrav {
namespace {

constexpr std::int64_t kPiece = 1 << 20;

/// A node that is open for reading, and closed with this object.
class OpenDisk {
  public:
    OpenDisk(DiskCalls& disks, const std::string& node)
        : disks_(disks),
          descriptor_(disks.open(node, DiskAccess::readOnly)),
          error_(descriptor_ < 0 ? errno : 0) {}
    ~OpenDisk() {
        if (descriptor_ >= 0) disks_.close(descriptor_);
    }
    OpenDisk(const OpenDisk&) = delete;
    OpenDisk& operator=(const OpenDisk&) = delete;

    /// Why it is not open; 0 when it is.
    int error() const { return error_; }

    /// Fewer than `length` bytes at the end of the disk or where it can't be read; errno is 0 at the end.
    std::vector<std::byte> read(std::int64_t offset, std::int64_t length) {
        std::vector<std::byte> bytes(static_cast<std::size_t>(length));
        std::size_t done = 0;
        while (done < bytes.size()) {
            errno = 0;
            const std::int64_t got =
                disks_.pread(descriptor_, std::span(bytes).subspan(done), offset + static_cast<std::int64_t>(done));
            if (got <= 0) break;
            done += static_cast<std::size_t>(got);
        }
        bytes.resize(done);
        return bytes;
    }

  private:
    DiskCalls& disks_;
    int descriptor_;
    int error_;
};

UpdateResult verificationFailed(const UpdateResult& result, const std::string& reason) {
    UpdateResult differs = result;
    differs.verified = false;
    return differs.endedWith(ExitCode::wentWrong, "Verification failed: " + reason + ".",
                             "Unplug the accessory, plug it in again and send the image once more.");
}

}  // namespace

UpdateResult verifyImage(const OrdinaryFile& image, const UpdateResult& confirmed, DiskCalls& disks) {
    const DiskNodes nodes(confirmed.disk);
    OpenDisk disk(disks, nodes.rawDisk);
    if (disk.error() == EACCES || disk.error() == EPERM) {
        return confirmed.endedWith(ExitCode::success,
                                   confirmed.sentence + " That is the service's own look: you may not open " +
                                       nodes.rawDisk + " for a second one.",
                                   confirmed.remedy);
    }
    if (disk.error() != 0)
        return verificationFailed(confirmed, "the disk can't be read back: " + systemWords(disk.error()));
    const std::int64_t place = confirmed.firstBlock * kBlockBytes;
    for (std::int64_t done = 0; done < image.size(); done += kPiece) {
        const std::vector<std::byte> wanted = image.read(done, kPiece);
        const std::int64_t length = std::min(kPiece, image.size() - done);
        const std::vector<std::byte> found = disk.read(place + done, length);
        if (std::ssize(found) != length) {
            const std::string why = errno != 0 ? systemWords(errno) : "it ends there";
            return verificationFailed(confirmed, "the disk can't be read back: " + why);
        }
        const auto [difference, end] = std::ranges::mismatch(found, wanted);
        if (difference == found.end() && end == wanted.end()) continue;
        return verificationFailed(confirmed, "the disk differs from the image at byte " +
                                                 std::to_string(done + (difference - found.begin())) + " of it");
    }
    return confirmed.endedWith(
        ExitCode::success,
        "Verified: the " + std::to_string(image.size()) + " bytes on the disk are those of the image.",
        confirmed.remedy);
}

}  // namespace kestrav
