#include "cli/OrdinaryFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

#include "base/retry.h"
#include "base/systemWords.h"
#include "base/utf8.h"
#include "device/countReadableBytes.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;

std::optional<std::string> whatItIsInstead(mode_t mode) {
    if (S_ISREG(mode)) return std::nullopt;
    if (S_ISDIR(mode)) return "is a folder";
    if (S_ISFIFO(mode)) return "is a pipe";
    if (S_ISBLK(mode) || S_ISCHR(mode)) return "is a device";
    return "is not an ordinary file";
}

Problem cannotBeRead(const std::string& path, int error) {
    return refused(path + " can't be read: " + systemWords(error) + ". Check the name and your rights to the file.");
}

/// The path by which the command service can open the file too, or why there is none.
Outcome<fs::path> sharedPath(const std::string& path) {
    std::error_code error;
    fs::path absolute = fs::absolute(path, error);
    if (error) {
        return refused(path + " has no absolute path: the current folder can't be told. Change to one that exists.");
    }
    if (!isValidUTF8(absolute.native())) {
        return refused(
            "The file's path is not valid UTF-8, so it can't be sent to the command service. Rename the "
            "file or its folder.");
    }
    const std::string folder = *std::next(absolute.begin());
    if (folder == "proc" || folder == "dev") {
        return refused(path + " may be another file to the command service. Give the name of the file itself.");
    }
    return absolute;
}

}  // namespace

Outcome<OrdinaryFile> OrdinaryFile::open(const std::string& path) {
    // O_NONBLOCK: a pipe must be refused, not waited for. It means nothing for an ordinary file.
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (!fd || ::fstat(fd.get(), &status) != 0) return cannotBeRead(path, errno);
    if (const auto instead = whatItIsInstead(status.st_mode)) {
        return refused(path + " " + *instead + ". Give the name of an ordinary file that holds the image.");
    }
    char first = 0;
    if (::pread(fd.get(), &first, 1, 0) < 0) return cannotBeRead(path, errno);
    const auto shared = sharedPath(path);
    if (!shared) return shared.problem();
    std::int64_t size = status.st_size;
    // One whose content is made while it is read has no size of its own.
    if (size == 0) size = static_cast<std::int64_t>(countReadableBytes(path).value_or(0));
    return OrdinaryFile(std::move(fd), shared.value(), size);
}

std::vector<std::byte> OrdinaryFile::read(std::int64_t offset, std::int64_t length) const {
    std::vector<std::byte> bytes(static_cast<std::size_t>(std::max<std::int64_t>(0, std::min(length, size_ - offset))));
    std::size_t done = 0;
    while (done < bytes.size()) {
        const std::int64_t at = offset + static_cast<std::int64_t>(done);
        const ssize_t count = retry([&] { return ::pread(fd_.get(), bytes.data() + done, bytes.size() - done, at); });
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    bytes.resize(done);
    return bytes;
}

std::string cannotBeReadToItsEnd(const OrdinaryFile& file) {
    return file.path() + " can't be read to its end. Copy it to a sound disk and try again.";
}

}  // namespace kestrav
