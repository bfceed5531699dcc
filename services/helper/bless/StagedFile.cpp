#include "services/helper/bless/StagedFile.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <utility>

#include "services/helper/bless/InstallError.h"
#include "services/helper/bless/TrustedFolder.h"

namespace kestrav {
namespace {

void writeAll(const UniqueFd& file, const std::string& bytes, const std::string& path) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t put = ::write(file.get(), bytes.data() + done, bytes.size() - done);
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) throw systemFailure("The file " + path + " can't be written");
        done += static_cast<std::size_t>(put);
    }
}

}  // namespace

StagedFile::StagedFile(const WantedFile& wanted)
    : folder_(openTrustedFolder(wanted.folder, IfMissing::create)),
      name_(wanted.name),
      path_(wanted.path()) {
    write(wanted);
}

StagedFile::~StagedFile() {
    if (!temporaryName_.empty()) ::unlinkat(folder_.get(), temporaryName_.c_str(), 0);
}

StagedFile::StagedFile(StagedFile&& other) noexcept
    : folder_(std::move(other.folder_)),
      name_(std::move(other.name_)),
      temporaryName_(std::exchange(other.temporaryName_, {})),
      path_(std::move(other.path_)) {}

void StagedFile::write(const WantedFile& wanted) {
    // The leading dot keeps bus, systemd and udev from reading it: they go by the name's end, and this one's is ".new".
    const std::string temporary = "." + name_ + ".new";
    // Left over by an installation that was killed.
    ::unlinkat(folder_.get(), temporary.c_str(), 0);
    const UniqueFd file(
        ::openat(folder_.get(), temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!file) throw systemFailure("A file can't be made in " + wanted.folder);
    temporaryName_ = temporary;
    writeAll(file, wanted.bytes, path_);
    if (::fchown(file.get(), 0, 0) != 0 || ::fchmod(file.get(), wanted.mode) != 0 || ::fsync(file.get()) != 0) {
        throw systemFailure("The file " + path_ + " can't be written");
    }
}

void StagedFile::putInPlace() {
    if (::renameat(folder_.get(), temporaryName_.c_str(), folder_.get(), name_.c_str()) != 0) {
        throw systemFailure("The file " + path_ + " can't be put in its place");
    }
    temporaryName_.clear();
    if (::fsync(folder_.get()) != 0) throw systemFailure("The folder of " + path_ + " can't be written");
}

bool StagedFile::isInPlace(const WantedFile& wanted) {
    const UniqueFd folder = openTrustedFolder(wanted.folder, IfMissing::doWithout);
    if (!folder) return false;
    struct stat status {};
    if (::fstatat(folder.get(), wanted.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return false;
    // A second name would let somebody keep today's file for tomorrow.
    const bool ours = S_ISREG(status.st_mode) && status.st_uid == 0 && status.st_gid == 0 && status.st_nlink == 1 &&
                      (status.st_mode & 07777) == wanted.mode &&
                      status.st_size == static_cast<off_t>(wanted.bytes.size());
    return ours && readTrustedFile(folder, wanted.name, wanted.path()) == wanted.bytes;
}

bool StagedFile::remove(const std::string& folderPath, const std::string& name) {
    const UniqueFd folder = openTrustedFolder(folderPath, IfMissing::doWithout);
    if (!folder) return false;
    if (::unlinkat(folder.get(), name.c_str(), 0) != 0) {
        if (errno == ENOENT) return false;
        throw systemFailure("The file " + folderPath + "/" + name + " can't be removed");
    }
    if (::fsync(folder.get()) != 0) throw systemFailure("The folder " + folderPath + " can't be written");
    return true;
}

}  // namespace kestrav
