#include "services/privileged/ImageFile.h"

#include <sys/stat.h>

#include "services/privileged/AnswerText.h"

namespace kestrav {

Outcome<ImageFile> ImageFile::open(const std::string& path, const Caller& caller, ImagePatience patience) {
    auto reader = std::make_unique<ImageReader>(path, caller, patience);
    const auto file = reader->opened();
    const std::string name = "the image " + shown(path);
    if (file.error == std::errc::timed_out) {
        return refused(name + " can't be opened: its file system does not answer. Copy it to another disk first.");
    }
    if (file.error) {
        return refused(name + " can't be opened by user " + std::to_string(caller.uid) + ": " +
                       systemWords(file.error.value()) + ".");
    }
    if (!S_ISREG(file.mode)) return refused(name + " is not a regular file.");
    if (file.size <= 0) return refused(name + " is empty.");
    return ImageFile(std::move(reader), file);
}

std::error_code ImageFile::read(std::uint64_t offset, std::span<std::byte> into) const {
    return reader_->read(offset, into);
}

std::error_code ImageFile::lengthError() const {
    const auto now = reader_->look();
    if (now.error) return now.error;
    const bool same = now.size == static_cast<std::int64_t>(size_);
    return same ? std::error_code() : std::make_error_code(std::errc::result_out_of_range);
}

}  // namespace kestrav
