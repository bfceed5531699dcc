#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace kestrav {

/// Writes `bytes` to `path` whole or not at all: to a temporary file beside it that is renamed when complete.
/// An existing ordinary file is replaced; a device, pipe or terminal at `path` is written to as it is.
/// Returns a sentence that says what went wrong, or nothing.
std::optional<std::string> writeWhole(const std::string& path, std::span<const std::byte> bytes);

}  // namespace kestrav
