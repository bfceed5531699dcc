#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <sys/types.h>

#include "base/Outcome.h"

namespace kestrav {

// What the system reads and writes piece by piece, and interrupts with signals, done whole. Each function blocks until
// it is done. A problem's `cause` is the system's error; where no more is said of it, its sentence is the system's
// words.

/// The bytes of the ordinary file at `file`. The cause is EISDIR for a folder, EINVAL for anything else that is no
/// ordinary file (a pipe is not waited for), EFBIG for one of more than `longest` bytes.
Outcome<std::string> readWholeFile(const std::filesystem::path& file, std::size_t longest);

/// Fills `into` from `offset` on and returns how many bytes there were: fewer than asked for only where the file ends.
Outcome<std::size_t> readAt(int descriptor, std::span<std::byte> into, std::uint64_t offset);

/// Writes all of it. After a problem a part may have been written.
Outcome<void> writeAll(int descriptor, std::span<const std::byte> bytes);
Outcome<void> writeAllAt(int descriptor, std::span<const std::byte> bytes, std::uint64_t offset);

/// Puts `bytes` in place of the file, in one step: they are written to a new file beside it, brought to the disk, and
/// given the name then. A link at `file` is replaced itself. After a problem what was there is untouched; the sentence
/// says which step it was. The new name reaches the disk with syncFolder().
Outcome<void> replaceFile(const std::filesystem::path& file, std::span<const std::byte> bytes, mode_t mode);

/// Returns when the names in the folder are on the disk.
Outcome<void> syncFolder(const std::filesystem::path& folder);

}  // namespace kestrav
