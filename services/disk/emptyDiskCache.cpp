#include "services/disk/emptyDiskCache.h"

#include <array>
#include <cerrno>
#include <scsi/sg.h>
#include <sys/ioctl.h>

#include "base/systemProblem.h"

namespace kestrav {
namespace {

constexpr unsigned char kSynchronizeCache = 0x35;
// An updater waits a minute for its answer, and the kernel needs some of it for giving the disk up.
constexpr unsigned kPatience = 30'000;  // milliseconds

constexpr std::uint16_t kDidNoConnect = 0x01;
constexpr std::uint16_t kDidTimeOut = 0x03;
constexpr std::uint8_t kCheckCondition = 0x02;

enum SenseKey : unsigned char { noSense = 0x0, recoveredError = 0x1, illegalRequest = 0x5 };

/// The sense key, where there is one.
unsigned senseKey(std::span<const unsigned char> sense) {
    constexpr unsigned kNone = 0x10;
    if (sense.size() < 3) return kNone;
    const unsigned format = sense[0] & 0x7fU;
    if (format == 0x70 || format == 0x71) return sense[2] & 0xfU;
    if (format == 0x72 || format == 0x73) return sense[1] & 0xfU;
    return kNone;
}

}  // namespace

Outcome<void> keptBytes(const DiskAnswer& answer) {
    if (answer.hostStatus == kDidNoConnect) return systemProblem(ENODEV);
    if (answer.hostStatus == kDidTimeOut) return systemProblem(ETIMEDOUT);
    if (answer.hostStatus != 0) return systemProblem(EIO);
    if (answer.status == 0) return {};
    if (answer.status != kCheckCondition) return systemProblem(EIO);
    const unsigned key = senseKey(answer.sense);
    const bool kept = key == noSense || key == recoveredError || key == illegalRequest;
    if (!kept) return systemProblem(EIO);
    return {};
}

Outcome<void> emptyDiskCache(int node) {
    std::array<unsigned char, 10> command{kSynchronizeCache};  // all other bytes 0: the whole disk, and wait for it
    std::array<unsigned char, 64> sense{};
    sg_io_hdr request{};
    request.interface_id = 'S';
    request.dxfer_direction = SG_DXFER_NONE;
    request.cmdp = command.data();
    request.cmd_len = command.size();
    request.sbp = sense.data();
    request.mx_sb_len = sense.size();
    request.timeout = kPatience;
    if (::ioctl(node, SG_IO, &request) != 0) {
        const bool noScsiDisk = errno == ENOTTY || errno == EINVAL || errno == ENOSYS;
        if (!noScsiDisk) return systemProblem(errno);
        return {};
    }
    return keptBytes({request.host_status, request.status, std::span(sense).first(request.sb_len_wr)});
}

}  // namespace kestrav
