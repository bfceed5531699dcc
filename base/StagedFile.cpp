#include "base/StagedFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "base/systemProblem.h"
#include "base/wholeFile.h"

namespace kestrav {

Outcome<StagedFile> StagedFile::beside(const std::filesystem::path& file) {
    std::string temporary = file.parent_path() / ("." + file.filename().string() + ".XXXXXX");
    UniqueFd opened(::mkostemp(temporary.data(), O_CLOEXEC));
    if (!opened) return systemProblem(errno);
    return StagedFile({}, std::move(opened), std::move(temporary), file);
}

Outcome<StagedFile> StagedFile::in(UniqueFd folder, const std::string& name) {
    std::string temporary = temporaryName(name);
    ::unlinkat(folder.get(), temporary.c_str(), 0);
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    UniqueFd opened(::openat(folder.get(), temporary.c_str(), kFlags, kOwnerAlone));
    if (!opened) return systemProblem(errno);
    return StagedFile(std::move(folder), std::move(opened), std::move(temporary), name);
}

StagedFile::StagedFile(UniqueFd folder, UniqueFd file, std::string temporaryName, std::string name)
    : folder_(std::move(folder)),
      file_(std::move(file)),
      temporaryName_(std::move(temporaryName)),
      name_(std::move(name)) {}

StagedFile::StagedFile(StagedFile&& other) noexcept
    : folder_(std::move(other.folder_)),
      file_(std::move(other.file_)),
      temporaryName_(std::exchange(other.temporaryName_, {})),
      name_(std::move(other.name_)) {}

StagedFile::~StagedFile() {
    if (!temporaryName_.empty()) ::unlinkat(base(), temporaryName_.c_str(), 0);
}

int StagedFile::base() const {
    return folder_ ? folder_.get() : AT_FDCWD;
}

Outcome<void> StagedFile::fill(std::span<const std::byte> bytes, mode_t mode) {
    if (auto written = writeAll(file_.get(), bytes); !written) return written;
    // It was made for its owner alone, and not every file system knows rights that could be set.
    if (mode != kOwnerAlone && ::fchmod(file_.get(), mode) != 0) return systemProblem(errno);
    if (::fsync(file_.get()) != 0) return systemProblem(errno);
    file_.reset();
    return {};
}

Outcome<void> StagedFile::putInPlace() {
    if (::renameat(base(), temporaryName_.c_str(), base(), name_.c_str()) != 0) return systemProblem(errno);
    temporaryName_.clear();
    return {};
}

}  // namespace kestrav
