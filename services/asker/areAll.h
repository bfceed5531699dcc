#pragma once

#include <string_view>
#include <sys/types.h>

namespace kestrav {

/// Whether the four numbers of the field "Uid:" in /proc/PID/status (real, effective, saved, for files) are all `uid`.
bool areAll(std::string_view field, uid_t uid);

}  // namespace kestrav
