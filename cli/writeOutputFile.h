#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "base/Outcome.h"

namespace kestrav {

/// Writes `bytes` to `path` whole or not at all: to a temporary file beside it that is renamed when complete.
/// An existing ordinary file is replaced; a device, pipe or terminal at `path` is written to as it is.
/// The problem's sentence says what to do.
Outcome<void> writeOutputFile(const std::string& path, std::span<const std::byte> bytes);

}  // namespace kestrav
