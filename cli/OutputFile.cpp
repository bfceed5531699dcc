#include "cli/OutputFile.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <utility>

#include "base/systemWords.h"
#include "base/wholeFile.h"

namespace kestrav {
namespace {

Problem cannotBeWritten(const std::string& path, std::error_code error) {
    return failed(path + " can't be written: " + systemWords(error.value()) + ". Choose another place.", error);
}

/// The rights that a newly created file gets from the process's mask.
mode_t newFileMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

}  // namespace

Outcome<OutputFile> OutputFile::open(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) return beside(path, path, newFileMode());
    if (!S_ISREG(status.st_mode)) {
        UniqueFd inPlace(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
        if (!inPlace) return cannotBeWritten(path, {errno, std::generic_category()});
        return OutputFile(path, std::move(inPlace), std::nullopt, 0);
    }
    // Through a symbolic link, so that the link stays one.
    std::error_code error;
    const std::string target = std::filesystem::canonical(path, error);
    if (error) return cannotBeWritten(path, error);
    return beside(path, target, status.st_mode & 0777);
}

Outcome<OutputFile> OutputFile::beside(const std::string& path, const std::string& target, mode_t mode) {
    auto staged = StagedFile::beside(target);
    if (!staged) return cannotBeWritten(path, staged.problem().cause);
    return OutputFile(path, {}, std::move(staged.value()), mode);
}

Outcome<void> OutputFile::write(std::span<const std::byte> bytes) {
    const auto written = writeAll(staged_ ? staged_->descriptor() : inPlace_.get(), bytes);
    if (!written) return cannotBeWritten(path_, written.problem().cause);
    return {};
}

Outcome<void> OutputFile::finish() {
    if (!staged_) return {};
    auto done = staged_->fill({}, mode_);
    if (done) done = staged_->putInPlace();
    if (!done) return cannotBeWritten(path_, done.problem().cause);
    return {};
}

}  // namespace kestrav
