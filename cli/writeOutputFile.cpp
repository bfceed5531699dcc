#include "cli/writeOutputFile.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

#include "base/UniqueFd.h"
#include "base/systemWords.h"
#include "base/wholeFile.h"

namespace kestrav {
namespace {

Problem cannotBeWritten(const std::string& path, std::error_code error) {
    return failed(path + " can't be written: " + systemWords(error.value()) + ". Choose another place.", error);
}

Outcome<void> writeInPlace(const std::string& path, std::span<const std::byte> bytes) {
    const UniqueFd fd(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (!fd) return cannotBeWritten(path, {errno, std::generic_category()});
    const auto written = writeAll(fd.get(), bytes);
    if (!written) return cannotBeWritten(path, written.problem().cause);
    return {};
}

/// The rights that a newly created file gets from the process's mask.
mode_t newFileMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

Outcome<void> replace(const std::string& path, std::span<const std::byte> bytes, mode_t mode) {
    const auto replaced = replaceFile(path, bytes, mode);
    if (!replaced) return cannotBeWritten(path, replaced.problem().cause);
    return {};
}

}  // namespace

Outcome<void> writeOutputFile(const std::string& path, std::span<const std::byte> bytes) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) return replace(path, bytes, newFileMode());
    if (!S_ISREG(status.st_mode)) return writeInPlace(path, bytes);
    // Through a symbolic link, so that the link stays one.
    std::error_code error;
    const std::string target = std::filesystem::canonical(path, error);
    if (error) return cannotBeWritten(path, error);
    return replace(target, bytes, status.st_mode & 0777);
}

}  // namespace kestrav
