#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <sys/types.h>
#include <system_error>

#include "services/privileged/Caller.h"
#include "services/privileged/ImageReader.h"
#include "services/privileged/Outcome.h"

namespace kestrav {

/// An image, opened with the rights of the user who wants it written, in a process of its own.
class ImageFile {
  public:
    /// Opens `path`, which is absolute. Refused when that user may not read it, when it is not a regular file, when it
    /// is empty, and when its file system takes too long. Forks, so the calling process better has one thread only.
    static Outcome<ImageFile> open(const std::string& path, const Caller& caller, ImagePatience patience = {});

    std::uint64_t size() const { return size_; }

    /// The file system that the file lies on.
    dev_t fileSystem() const { return fileSystem_; }

    /// Fills `into` from `offset` on. A file that ends before is an error (it was as long when it was opened):
    /// std::errc::result_out_of_range. A file system that doesn't answer is std::errc::timed_out.
    std::error_code read(std::uint64_t offset, std::span<std::byte> into) const;

    /// Nothing while the file is as long as when it was opened, std::errc::result_out_of_range when it has grown or
    /// shrunk, else why that can't be told.
    std::error_code lengthError() const;

  private:
    ImageFile(std::unique_ptr<ImageReader> reader, const ImageReader::File& file)
        : reader_(std::move(reader)),
          size_(static_cast<std::uint64_t>(file.size)),
          fileSystem_(file.fileSystem) {}

    std::unique_ptr<ImageReader> reader_;
    std::uint64_t size_;
    dev_t fileSystem_;
};

}  // namespace kestrav
