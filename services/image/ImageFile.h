#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <sys/types.h>

#include "base/Outcome.h"
#include "services/image/ImageBytes.h"
#include "services/image/ImageReader.h"
#include "services/image/UserRights.h"

namespace kestrav {

/// An image, opened with the rights of the user who wants it written, in a process of its own.
class ImageFile final : public ImageBytes {
  public:
    /// Opens `path`, which is absolute. Refused when that user may not read it, when it is not a regular file, when it
    /// is empty, and when its file system takes too long. Forks, so the calling process better has one thread only.
    static Outcome<ImageFile> open(const std::string& path, const UserRights& rights, ImagePatience patience = {});

    std::uint64_t size() const override { return size_; }

    /// The file system that the file lies on.
    dev_t fileSystem() const { return fileSystem_; }

    /// Fills `into` from `offset` on. The cause of a problem is std::errc::result_out_of_range when the file ends
    /// before (it was as long when it was opened), std::errc::timed_out when its file system doesn't answer; the
    /// sentence is the system's words.
    Outcome<void> read(std::uint64_t offset, std::span<std::byte> into) const override;
    Outcome<void> readAgain(std::uint64_t offset, std::span<std::byte> into) const override {
        return read(offset, into);
    }

    /// Whether the file has those bytes from `offset` on, and is still as long as when it was opened. The problems are
    /// those of read().
    Outcome<bool> holds(std::uint64_t offset, std::span<const std::byte> bytes) const;

    /// Nothing more is read of it: its process may go.
    void letGo() const { reader_->end(); }

    /// A problem unless the file is as long as when it was opened: its cause is std::errc::result_out_of_range when the
    /// file has grown or shrunk, else why that can't be told.
    Outcome<void> keptLength() const override;

    /// All that is read of it takes no longer than the patience allows in all; afterwards every step is a problem of
    /// the cause std::errc::timed_out.
    bool timeIsUp() const override { return reader_->timeIsUp(); }

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
