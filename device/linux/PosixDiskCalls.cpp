#include "device/linux/PosixDiskCalls.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include "base/retry.h"

namespace kestrav {

int PosixDiskCalls::open(const std::string& path, DiskAccess access) {
    const int flags = (access == DiskAccess::readOnly ? O_RDONLY : O_RDWR) | O_CLOEXEC;
    return retry([&] { return ::open(path.c_str(), flags); });
}

void PosixDiskCalls::close(int descriptor) {
    // Not repeated when a signal interrupts it: Linux has released the descriptor by then.
    ::close(descriptor);
}

std::int64_t PosixDiskCalls::pread(int descriptor, std::span<std::byte> buffer, std::int64_t offset) {
    return retry([&] { return ::pread(descriptor, buffer.data(), buffer.size(), offset); });
}

std::int64_t PosixDiskCalls::pwrite(int descriptor, std::span<const std::byte> data, std::int64_t offset) {
    return retry([&] { return ::pwrite(descriptor, data.data(), data.size(), offset); });
}

void PosixDiskCalls::unmount(const std::string& path) {
    retry([&] { return ::umount2(path.c_str(), 0); });
}

}  // namespace kestrav
