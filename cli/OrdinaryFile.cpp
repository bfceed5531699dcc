#include "cli/OrdinaryFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

#include "base/utf8.h"

namespace kestrav {
namespace {

std::optional<std::string> whatItIsInstead(mode_t mode) {
    if (S_ISREG(mode)) return std::nullopt;
    if (S_ISDIR(mode)) return "is a folder";
    if (S_ISFIFO(mode)) return "is a pipe";
    if (S_ISBLK(mode) || S_ISCHR(mode)) return "is a device";
    return "is not an ordinary file";
}

std::string cannotBeRead(const std::string& path, int error) {
    return path + " can't be read: " + std::strerror(error) + ". Check the name and your rights to the file.";
}

}  // namespace

std::variant<OrdinaryFile, std::string> OrdinaryFile::open(const std::string& path) {
    if (!isValidUTF8(path)) {
        return "The file's name is not valid UTF-8, so it can't be sent to the command service. Rename the file.";
    }
    // O_NONBLOCK: a pipe must be refused, not waited for. It means nothing for an ordinary file.
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status = {};
    if (!fd || ::fstat(fd.get(), &status) != 0) return cannotBeRead(path, errno);
    if (const auto instead = whatItIsInstead(status.st_mode)) {
        return path + " " + *instead + ". Give the name of an ordinary file that holds the image.";
    }
    char first = 0;
    if (status.st_size > 0 && ::pread(fd.get(), &first, 1, 0) < 0) return cannotBeRead(path, errno);
    std::error_code failed;
    const std::string absolute = std::filesystem::absolute(path, failed);
    if (failed)
        return path + " has no absolute path: the current folder can't be told. Change to a folder that exists.";
    return OrdinaryFile(std::move(fd), absolute, status.st_size);
}

std::vector<std::byte> OrdinaryFile::read(std::int64_t offset, std::int64_t length) const {
    std::vector<std::byte> bytes(static_cast<std::size_t>(std::max<std::int64_t>(0, std::min(length, size_ - offset))));
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            ::pread(fd_.get(), bytes.data() + done, bytes.size() - done, offset + static_cast<std::int64_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    bytes.resize(done);
    return bytes;
}

}  // namespace kestrav
