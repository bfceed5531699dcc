#include "device/countReadableBytes.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#include "base/UniqueFd.h"
#include "base/retry.h"

namespace kestrav {

namespace {

// Larger pieces cost more in fresh memory than they save in calls: an image is short.
constexpr std::size_t kBufferSize = std::size_t{32} * 1024;

UniqueFd openForReading(const std::string& path) {
    // A path with a NUL inside would name another file to the system than the one that is handed on.
    if (path.find('\0') != std::string::npos) return {};
    // Opening a pipe waits for its other end, and a signal may end that wait.
    return UniqueFd(retry([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY); }));
}

// Goes to the next byte at or after `position` that is not in a hole, or to the end. A hole is zeros by definition:
// no medium is asked for them, so passing over it misses no error. What knows no positions stays where it is.
off_t passHole(int file, off_t position) {
    const off_t data = ::lseek(file, position, SEEK_DATA);
    if (data >= position) return data;
    if (data < 0 && errno != ENXIO) return position;
    const off_t end = ::lseek(file, 0, SEEK_END);
    if (end >= position) return end;
    // A file whose content is made while it is read may claim an end that lies before it, 0 as a rule. Going there
    // would mean to read the same for ever.
    ::lseek(file, position, SEEK_SET);
    return position;
}

}  // namespace

std::optional<std::uint64_t> countReadableBytes(std::string_view path) {
    const UniqueFd file = openForReading(std::string(path));
    if (!file) return std::nullopt;
    std::array<char, kBufferSize> buffer;  // NOLINT: nobody looks at what was read
    off_t position = 0;
    for (;;) {
        position = passHole(file.get(), position);
        const ssize_t count = retry([&] { return ::read(file.get(), buffer.data(), buffer.size()); });
        if (count < 0) return std::nullopt;
        if (count == 0) return static_cast<std::uint64_t>(position);
        position += count;
    }
}

}  // namespace kestrav
