#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <sys/stat.h>
#include <system_error>

#include "base/UniqueFd.h"
#include "services/privileged/Caller.h"
#include "services/privileged/Outcome.h"

namespace kestrav {

/// An image, opened with the rights of the user who wants it written.
class ImageFile {
  public:
    /// Opens `path`, which is absolute, in a child process that has `caller`'s rights and no open files. Refused when
    /// that user may not read it, when it is not a regular file, when it is empty, and when opening takes longer than
    /// ten seconds. Forks, so the calling process better has one thread only.
    static Outcome<ImageFile> open(const std::string& path, const Caller& caller);

    std::uint64_t size() const;

    /// The file system that the file lies on.
    dev_t fileSystem() const { return status_.st_dev; }

    /// Fills `into` from `offset` on. A file that ends before is an error (it was as long when it was opened):
    /// std::errc::result_out_of_range.
    std::error_code read(std::uint64_t offset, std::span<std::byte> into) const;

    /// False when the file has grown or shrunk since it was opened, or when that can't be told.
    bool keptItsLength() const;

  private:
    ImageFile(UniqueFd file, const struct stat& status) : file_(std::move(file)), status_(status) {}

    UniqueFd file_;
    struct stat status_;
};

}  // namespace kestrav
