#include "device/linux/PosixDiskCalls.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace kestrav {

namespace {

template <typename Call>
auto untilNotInterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

}  // namespace

int PosixDiskCalls::open(const std::string& path, DiskAccess access) {
    const int flags = (access == DiskAccess::readOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC;
    return untilNotInterrupted([&] { return ::open(path.c_str(), flags); });
}

void PosixDiskCalls::close(int descriptor) {
    // Not repeated when interrupted: on Linux the descriptor is gone by then.
    ::close(descriptor);
}

std::int64_t PosixDiskCalls::pread(int descriptor, std::span<std::byte> buffer, std::int64_t offset) {
    return untilNotInterrupted([&] { return ::pread(descriptor, buffer.data(), buffer.size(), offset); });
}

std::int64_t PosixDiskCalls::pwrite(int descriptor, std::span<const std::byte> data, std::int64_t offset) {
    return untilNotInterrupted([&] { return ::pwrite(descriptor, data.data(), data.size(), offset); });
}

void PosixDiskCalls::unmount(const std::string& path) {
    untilNotInterrupted([&] { return ::umount2(path.c_str(), 0); });
}

}  // namespace kestrav
