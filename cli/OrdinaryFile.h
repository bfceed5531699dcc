#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "base/Outcome.h"
#include "base/UniqueFd.h"

namespace kestrav {

/// A file that is going to be sent to the disk: an ordinary, readable one, held open.
class OrdinaryFile {
  public:
    /// The open file; a problem's sentence says what is wrong with it and what to do.
    static Outcome<OrdinaryFile> open(const std::string& path);

    /// The absolute path: the command service, which opens the file again, works in another folder.
    const std::string& path() const noexcept { return path_; }

    /// Bytes at the time of opening.
    std::int64_t size() const noexcept { return size_; }

    /// Up to `length` bytes from `offset`; fewer at the end of the file or when it can't be read further.
    std::vector<std::byte> read(std::int64_t offset, std::int64_t length) const;

  private:
    OrdinaryFile(UniqueFd fd, std::string path, std::int64_t size) noexcept
        : fd_(std::move(fd)),
          path_(std::move(path)),
          size_(size) {}

    UniqueFd fd_;
    std::string path_;
    std::int64_t size_;
};

/// What to say of a file that could be opened but not read whole.
std::string cannotBeReadToItsEnd(const OrdinaryFile& file);

}  // namespace kestrav
