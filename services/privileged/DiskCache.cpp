#include "services/privileged/DiskCache.h"

#include <array>
#include <cerrno>
#include <scsi/sg.h>
#include <sys/ioctl.h>

namespace kestrav {
namespace {

constexpr unsigned char synchronizeCache = 0x35;
// An updater waits a minute for its answer, and the kernel needs some of it for giving the disk up.
constexpr unsigned patience = 30'000;  // milliseconds

constexpr std::uint16_t didNoConnect = 0x01;
constexpr std::uint16_t didTimeOut = 0x03;
constexpr std::uint8_t checkCondition = 0x02;

enum SenseKey : unsigned char { noSense = 0x0, recoveredError = 0x1, illegalRequest = 0x5 };

std::error_code systemError(std::errc error) {
    return std::make_error_code(error);
}

/// The sense key, where there is one.
unsigned senseKey(std::span<const unsigned char> sense) {
    constexpr unsigned none = 0x10;
    if (sense.size() < 3) return none;
    const unsigned format = sense[0] & 0x7fU;
    if (format == 0x70 || format == 0x71) return sense[2] & 0xfU;
    if (format == 0x72 || format == 0x73) return sense[1] & 0xfU;
    return none;
}

}  // namespace

std::error_code keptBytes(const DiskAnswer& answer) {
    if (answer.hostStatus == didNoConnect) return systemError(std::errc::no_such_device);
    if (answer.hostStatus == didTimeOut) return systemError(std::errc::timed_out);
    if (answer.hostStatus != 0) return systemError(std::errc::io_error);
    if (answer.status == 0) return {};
    if (answer.status != checkCondition) return systemError(std::errc::io_error);
    const unsigned key = senseKey(answer.sense);
    const bool kept = key == noSense || key == recoveredError || key == illegalRequest;
    return kept ? std::error_code() : systemError(std::errc::io_error);
}

std::error_code emptyDiskCache(int node) {
    std::array<unsigned char, 10> command{synchronizeCache};  // all other bytes 0: the whole disk, and wait for it
    std::array<unsigned char, 64> sense{};
    sg_io_hdr request{};
    request.interface_id = 'S';
    request.dxfer_direction = SG_DXFER_NONE;
    request.cmdp = command.data();
    request.cmd_len = command.size();
    request.sbp = sense.data();
    request.mx_sb_len = sense.size();
    request.timeout = patience;
    if (::ioctl(node, SG_IO, &request) != 0) {
        const bool noScsiDisk = errno == ENOTTY || errno == EINVAL || errno == ENOSYS;
        return noScsiDisk ? std::error_code() : std::error_code(errno, std::generic_category());
    }
    return keptBytes({request.host_status, request.status, std::span(sense).first(request.sb_len_wr)});
}

}  // namespace kestrav
