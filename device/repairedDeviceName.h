#pragma once

#include <string>
#include <string_view>

namespace kestrav {

/// A device's name as it is kept: `reported` up to its first NUL, at most 127 bytes of it, in well-formed UTF-8.
/// Names come from the device's own memory, so anything may be in them. What isn't UTF-8 becomes U+FFFD, and a
/// character that the limit would split is left out.
std::string repairedDeviceName(std::string_view reported);

}  // namespace kestrav
