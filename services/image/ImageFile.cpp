#include "services/image/ImageFile.h"

#include <cerrno>
#include <sys/stat.h>

#include "base/shownText.h"
#include "base/systemProblem.h"

namespace kestrav {

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
    if (file.value().size <= 0) return refused(name + " is empty.");
    return ImageFile(std::move(reader), file.value());
}

Outcome<void> ImageFile::read(std::uint64_t offset, std::span<std::byte> into) const {
    return reader_->read(offset, into);
}

Outcome<void> ImageFile::keptLength() const {
    const auto now = reader_->look();
    if (!now) return now.problem();
    if (now.value().size != static_cast<std::int64_t>(size_)) return systemProblem(ERANGE);
    return {};
}

}  // namespace kestrav
