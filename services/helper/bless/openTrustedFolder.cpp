#include "services/helper/bless/openTrustedFolder.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <span>
#include <sys/stat.h>

#include "base/systemProblem.h"
#include "base/wholeFile.h"

namespace kestrav {
namespace {

namespace fs = std::filesystem;
constexpr const char* kMayBeLink = "/usr/local";

constexpr off_t kLargestFile = off_t{256} << 20;

bool onlyRootCanWrite(const struct stat& status) {
    return status.st_uid == 0 && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

Outcome<void> judge(const UniqueFd& folder, const std::string& path) {
    struct stat status {};
    if (::fstat(folder.get(), &status) != 0) return systemProblem("The folder " + path + " can't be examined");
    if (onlyRootCanWrite(status)) return {};
    return refused("Refused: others than root can write to the folder " + path + ". Run 'chown root:root " + path +
                   " && chmod go-w " + path + "' first; until then nothing in it is safe.");
}

Outcome<UniqueFd> openStep(const UniqueFd& parent, const std::string& name, const std::string& path,
                           IfMissing ifMissing) {
    constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
    UniqueFd folder(::openat(parent.get(), name.c_str(), kFlags));
    if (!folder && errno == ENOENT && ifMissing == IfMissing::create) {
        if (::mkdirat(parent.get(), name.c_str(), 0755) != 0 && errno != EEXIST) {
            return systemProblem("The folder " + path + " can't be made");
        }
        folder.reset(::openat(parent.get(), name.c_str(), kFlags));
    }
    if (folder) return folder;
    if (errno == ENOENT && ifMissing == IfMissing::doWithout) return UniqueFd();
    if (errno == ELOOP || errno == ENOTDIR)
        return refused("Refused: " + path + " is not a folder but a link or a file.");
    return systemProblem("The folder " + path + " can't be opened");
}

/// `path` with what the link at kMayBeLink stands for, if there is one that root alone can have made. Systems whose
/// /usr is an image, which is never written to, keep that folder elsewhere.
std::string withoutLink(const std::string& path) {
    const std::string start = std::string(kMayBeLink) + "/";
    struct stat status {};
    if (!(path + "/").starts_with(start) || ::lstat(kMayBeLink, &status) != 0) return path;
    if (!S_ISLNK(status.st_mode) || status.st_uid != 0) return path;
    std::error_code error;
    const fs::path to = fs::read_symlink(kMayBeLink, error);
    if (error) return path;
    const fs::path rest = path.substr(std::min(start.size(), path.size()));
    std::string found = ((fs::path(kMayBeLink).parent_path() / to) / rest).lexically_normal();
    if (found.ends_with('/')) found.pop_back();
    return found;
}

Outcome<UniqueFd> openStepByStep(const std::string& path, IfMissing ifMissing) {
    Outcome<UniqueFd> folder(UniqueFd(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC)));
    if (!folder.value()) return systemProblem("The folder / can't be opened");
    if (const auto judged = judge(folder.value(), "/"); !judged) return judged.problem();
    for (std::size_t begin = 1; begin < path.size();) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        const std::string soFar = path.substr(0, end);
        folder = openStep(folder.value(), path.substr(begin, end - begin), soFar, ifMissing);
        if (!folder || !folder.value()) return folder;
        if (const auto judged = judge(folder.value(), soFar); !judged) return judged.problem();
        begin = end + 1;
    }
    return folder;
}

}  // namespace

Outcome<UniqueFd> openTrustedFolder(const std::string& path, IfMissing ifMissing) {
    const std::string found = withoutLink(path);
    if (found == path) return openStepByStep(path, ifMissing);
    // Who can exchange the link decides where it leads, so the folder that holds it counts as well.
    if (const auto holder = openStepByStep(fs::path(kMayBeLink).parent_path(), IfMissing::giveUp); !holder) {
        return holder.problem();
    }
    return openStepByStep(found, ifMissing);
}

Outcome<std::string> readTrustedFile(const UniqueFd& folder, const std::string& name, const std::string& path) {
    // O_NONBLOCK: a pipe in the file's place is told apart below instead of being waited for.
    const UniqueFd file(::openat(folder.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file) return systemProblem("The file " + path + " can't be opened");
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) return systemProblem("The file " + path + " can't be examined");
    if (!S_ISREG(status.st_mode) || !onlyRootCanWrite(status)) {
        return refused("Refused: others than root can change " + path + ".");
    }
    if (status.st_size > kLargestFile) return refused("Refused: " + path + " is larger than a program of ours can be.");
    std::string bytes(static_cast<std::size_t>(status.st_size), '\0');
    const auto got = readAt(file.get(), std::as_writable_bytes(std::span(bytes)), 0);
    if (!got) return systemProblem("The file " + path + " can't be read", got.problem().cause.value());
    if (got.value() < bytes.size()) return failed("The file " + path + " became shorter while it was read.");
    return bytes;
}

}  // namespace kestrav
