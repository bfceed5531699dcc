#include "services/helper/bless/TrustedFolder.h"

#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>

#include "services/helper/bless/InstallError.h"

namespace kestrav {
namespace {

constexpr off_t kLargestFile = off_t{256} << 20;

bool onlyRootCanWrite(const struct stat& status) {
    return status.st_uid == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

void judge(const UniqueFd& folder, const std::string& path) {
    struct stat status {};
    if (::fstat(folder.get(), &status) != 0) throw systemFailure("The folder " + path + " can't be examined");
    if (!onlyRootCanWrite(status)) {
        throw InstallError("Refused: others than root can write to the folder " + path +
                           ", so nothing in it is safe. Make it root's alone (chown root:root, chmod go-w).");
    }
}

UniqueFd openStep(const UniqueFd& parent, const std::string& name, const std::string& path, IfMissing ifMissing) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    UniqueFd folder(::openat(parent.get(), name.c_str(), flags));
    if (!folder && errno == ENOENT && ifMissing == IfMissing::create) {
        if (::mkdirat(parent.get(), name.c_str(), 0755) != 0 && errno != EEXIST) {
            throw systemFailure("The folder " + path + " can't be made");
        }
        folder.reset(::openat(parent.get(), name.c_str(), flags));
    }
    if (folder) return folder;
    if (errno == ENOENT && ifMissing == IfMissing::doWithout) return {};
    if (errno == ELOOP || errno == ENOTDIR)
        throw InstallError("Refused: " + path + " is not a folder but a link or a file.");
    throw systemFailure("The folder " + path + " can't be opened");
}

}  // namespace

InstallError systemFailure(const std::string& what, int error) {
    return InstallError(what + ": " + ::strerror(error) + ".");
}

UniqueFd openTrustedFolder(const std::string& path, IfMissing ifMissing) {
    UniqueFd folder(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) throw systemFailure("The folder / can't be opened");
    judge(folder, "/");
    for (std::size_t begin = 1; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string soFar = path.substr(0, end);
        folder = openStep(folder, path.substr(begin, end - begin), soFar, ifMissing);
        if (!folder) return folder;
        judge(folder, soFar);
        begin = end + 1;
    }
    return folder;
}

std::string readTrustedFile(const UniqueFd& folder, const std::string& name, const std::string& path) {
    // O_NONBLOCK: a pipe in the file's place is told apart below instead of being waited for.
    const UniqueFd file(::openat(folder.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file) throw systemFailure("The file " + path + " can't be opened");
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) throw systemFailure("The file " + path + " can't be examined");
    if (!S_ISREG(status.st_mode) || !onlyRootCanWrite(status)) {
        throw InstallError("Refused: others than root can change " + path + ".");
    }
    if (status.st_size > kLargestFile)
        throw InstallError("Refused: " + path + " is larger than a program of ours can be.");
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t got = ::read(file.get(), bytes.data() + done, bytes.size() - done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) throw systemFailure("The file " + path + " can't be read");
        if (got == 0) throw InstallError("The file " + path + " became shorter while it was read.");
        done += static_cast<std::size_t>(got);
    }
    return bytes;
}

}  // namespace kestrav
