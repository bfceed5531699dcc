#include "services/image/ImageFile.h"

#include <array>
#include <cerrno>
#include <sys/stat.h>

#include "base/shownText.h"
#include "base/systemProblem.h"

namespace kestrav {

namespace {

/// Some file systems say 0 of files that have something in them: /proc, and those of user space that don't know before
/// they are asked. Such a file isn't written: whether it fits is judged by its size.
Problem emptyOrUntold(ImageReader& reader, const std::string& name) {
    std::array<std::byte, 1> first{};
    const auto got = reader.read(0, first);
    if (got) {
        return refused(name +
                       " has something in it, but its file system does not tell how much; copy it to another "
                       "place first, and send the copy.");
    }
    const std::error_code cause = got.problem().cause;
    if (cause == std::errc::result_out_of_range) return refused(name + " is empty.");
    return refused(name + " says that it is empty, and can't be read: " + got.problem().sentence);
}

}  // namespace

Outcome<ImageFile> ImageFile::open(const std::string& path, const UserRights& rights, ImagePatience patience) {
    auto reader = std::make_unique<ImageReader>(path, rights, patience);
    const auto file = reader->opened();
    const std::string name = "the image " + shownText(path);
    if (!file && file.problem().cause == std::errc::timed_out) {
        return refused(name + " can't be opened: its file system does not answer. Copy it to another disk first.");
    }
    if (!file) {
        return refused(name + " can't be opened by user " + std::to_string(rights.uid) + ": " +
                       file.problem().sentence);
    }
    if (!S_ISREG(file.value().mode)) return refused(name + " is not a regular file.");
    if (file.value().size <= 0) return emptyOrUntold(*reader, name);
    return ImageFile(std::move(reader), file.value());
}

Outcome<void> ImageFile::read(std::uint64_t offset, std::span<std::byte> into) const {
    return reader_->read(offset, into);
}

Outcome<bool> ImageFile::holds(std::uint64_t offset, std::span<const std::byte> bytes) const {
    return reader_->holds(offset, bytes, size_);
}

Outcome<void> ImageFile::keptLength() const {
    const auto now = reader_->look();
    if (!now) return now.problem();
    if (now.value().size != static_cast<std::int64_t>(size_)) return systemProblem(ERANGE);
    return {};
}

}  // namespace kestrav
