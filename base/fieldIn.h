#pragma once

#include <string_view>

namespace kestrav {

/// A field of a text such as /proc/PID/status: what stands behind `name` ("Uid:") at the beginning of a line, without
/// the blanks before it; empty when there is no such line.
std::string_view fieldIn(std::string_view text, std::string_view name);

}  // namespace kestrav
