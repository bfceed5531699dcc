#pragma once

#include <span>
#include <string>

#include "outcome/Request.h"

namespace kestrav {

/// The write that the engine's `dd` arguments ask for: its disk, its place and its image's path. How long the image is
/// does not stand in them, so `bytes` is 0.
Request writeRequestIn(std::span<const std::string> arguments);

}  // namespace kestrav
