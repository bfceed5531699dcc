#include "base/wholeFile.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/StagedFile.h"
#include "base/UniqueFd.h"
#include "base/retry.h"
#include "base/systemProblem.h"

namespace kestrav {
namespace {

/// Makes `put` write again until nothing is left; it is given how much has been written so far.
template <class Put>
Outcome<void> writeWith(Put put, std::size_t size) {
    for (std::size_t done = 0; done < size;) {
        const ssize_t count = retry([&] { return put(done); });
        if (count < 0) return systemProblem(errno);
        // What takes nothing and names no reason would be asked for ever.
        if (count == 0) return systemProblem(EIO);
        done += static_cast<std::size_t>(count);
    }
    return {};
}

/// Nothing for an ordinary file, else the error that tells what it is not.
int kindError(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) return errno;
    if (S_ISDIR(status.st_mode)) return EISDIR;
    return S_ISREG(status.st_mode) ? 0 : EINVAL;
}

}  // namespace

Outcome<std::string> readWholeFile(const std::filesystem::path& file, std::size_t longest) {
    // Without O_NONBLOCK a pipe in place of the file would hold the program up for ever.
    const UniqueFd fd(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (const int error = fd ? kindError(fd.get()) : errno; error != 0) return systemProblem(error);
    std::string bytes;
    std::array<char, 1U << 16U> piece;  // NOLINT: only what read() wrote is looked at
    for (;;) {
        const ssize_t count = retry([&] { return ::read(fd.get(), piece.data(), piece.size()); });
        if (count < 0) return systemProblem(errno);
        if (count == 0) return bytes;
        bytes.append(piece.data(), static_cast<std::size_t>(count));
        if (bytes.size() > longest) return systemProblem(EFBIG);
    }
}

Outcome<std::size_t> readAt(int descriptor, std::span<std::byte> into, std::uint64_t offset) {
    std::size_t done = 0;
    while (done < into.size()) {
        const auto at = static_cast<off_t>(offset + done);
        const ssize_t count = retry([&] { return ::pread(descriptor, into.data() + done, into.size() - done, at); });
        if (count < 0) return systemProblem(errno);
        if (count == 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

Outcome<void> writeAll(int descriptor, std::span<const std::byte> bytes) {
    return writeWith([&](std::size_t done) { return ::write(descriptor, bytes.data() + done, bytes.size() - done); },
                     bytes.size());
}

Outcome<void> writeAllAt(int descriptor, std::span<const std::byte> bytes, std::uint64_t offset) {
    return writeWith(
        [&](std::size_t done) {
            return ::pwrite(descriptor, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
        },
        bytes.size());
}

Outcome<void> replaceFile(const std::filesystem::path& file, std::span<const std::byte> bytes, mode_t mode) {
    auto staged = StagedFile::beside(file);
    if (!staged) {
        return systemProblem("Could not create a file in " + file.parent_path().string(),
                             staged.problem().cause.value());
    }
    if (const auto filled = staged.value().fill(bytes, mode); !filled) {
        return systemProblem("Could not write " + file.string(), filled.problem().cause.value());
    }
    if (const auto placed = staged.value().putInPlace(); !placed) {
        return systemProblem("Could not replace " + file.string(), placed.problem().cause.value());
    }
    return {};
}

Outcome<void> syncFolder(const std::filesystem::path& folder) {
    const UniqueFd fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd || ::fsync(fd.get()) != 0) return systemProblem(errno);
    return {};
}

}  // namespace kestrav
