#pragma once

#include <string_view>
#include <sys/types.h>
#include <vector>

namespace kestrav {

/// Whether a line of /proc/PID/maps is about a file on one of those devices: its fourth word is the device in
/// hexadecimal, see proc(5). Any bytes may be in it.
bool isMappingOf(std::string_view line, const std::vector<dev_t>& devices);

}  // namespace kestrav
