#include "app/replaceFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include "base/UniqueFd.h"

namespace kestrav {
namespace {

/// A file that goes away again unless it got its final name.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::filesystem::path& beside)
        : name_(beside.parent_path() / ("." + beside.filename().string() + ".XXXXXX")) {
        fd_.reset(::mkostemp(name_.data(), O_CLOEXEC));
    }
    ~TemporaryFile() {
        if (fd_) ::unlink(name_.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool exists() const { return static_cast<bool>(fd_); }

    bool write(std::string_view content) const {
        while (!content.empty()) {
            const ssize_t written = ::write(fd_.get(), content.data(), content.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) return false;
            content.remove_prefix(static_cast<std::size_t>(written));
        }
        return ::fsync(fd_.get()) == 0;
    }

    bool become(const std::filesystem::path& file) {
        if (std::rename(name_.c_str(), file.c_str()) != 0) return false;
        fd_.reset();
        return true;
    }

  private:
    std::string name_;
    UniqueFd fd_;
};

/// The new name, too, has to reach the disk.
bool syncFolder(const std::filesystem::path& folder) {
    const UniqueFd fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return fd && ::fsync(fd.get()) == 0;
}

}  // namespace

std::optional<ApplicationError> replaceFile(const std::filesystem::path& file, std::string_view content) {
    TemporaryFile temporary(file);
    if (!temporary.exists()) return systemError(errno, "create a file in " + file.parent_path().string());
    if (!temporary.write(content)) return systemError(errno, "write " + file.string());
    if (!temporary.become(file)) return systemError(errno, "replace " + file.string());
    if (!syncFolder(file.parent_path())) return systemError(errno, "bring " + file.string() + " to the disk");
    return std::nullopt;
}

}  // namespace kestrav
