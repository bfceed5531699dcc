#pragma once

#include <cstdint>

#include "cli/CommandParts.h"
#include "cli/ExitCode.h"

namespace kestrav {

class OrdinaryFile;

/// Reads the area of an image that was just sent back and compares it; says what came of it. `areaOffset` is the area's
/// first byte on the disk.
ExitCode verifyImage(const OrdinaryFile& image, std::int64_t areaOffset, const CommandParts& parts);

}  // namespace kestrav
