#include "cli/OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "base/UniqueFd.h"

namespace kestrav {
namespace {

bool writeAll(int fd, std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(fd, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

std::string cannotBeWritten(const std::string& path, int error) {
    return path + " can't be written: " + std::strerror(error) + ". Choose another place.";
}

std::optional<std::string> writeInPlace(const std::string& path, std::span<const std::byte> bytes) {
    const UniqueFd fd(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (!fd || !writeAll(fd.get(), bytes)) return cannotBeWritten(path, errno);
    return std::nullopt;
}

/// The rights that a newly created file gets from the process's mask.
mode_t newFileMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

std::optional<std::string> writeBeside(const std::string& path, std::span<const std::byte> bytes, mode_t mode) {
    std::string temporary = path + ".XXXXXX";
    const UniqueFd fd(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!fd) return cannotBeWritten(path, errno);
    const bool complete = writeAll(fd.get(), bytes) && ::fchmod(fd.get(), mode) == 0 && ::fsync(fd.get()) == 0 &&
                          ::rename(temporary.c_str(), path.c_str()) == 0;
    if (complete) return std::nullopt;
    const int error = errno;
    ::unlink(temporary.c_str());
    return cannotBeWritten(path, error);
}

}  // namespace

std::optional<std::string> writeWhole(const std::string& path, std::span<const std::byte> bytes) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) return writeBeside(path, bytes, newFileMode());
    if (!S_ISREG(status.st_mode)) return writeInPlace(path, bytes);
    // Through a symbolic link, so that the link stays one.
    std::error_code failed;
    const std::string target = std::filesystem::canonical(path, failed);
    if (failed) return cannotBeWritten(path, failed.value());
    return writeBeside(target, bytes, status.st_mode & 0777);
}

}  // namespace kestrav
