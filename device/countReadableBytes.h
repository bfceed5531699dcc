#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kestrav {

/// Reads the file at `path` to its end and returns how many bytes it held; absent if any of them could not be read.
/// Works for whatever can be read, pipes included, and needs no more memory for a large file than for a small one.
std::optional<std::uint64_t> countReadableBytes(std::string_view path);

}  // namespace kestrav
