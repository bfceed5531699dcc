#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace kestrav {

/// Gives each line of a file in /proc to `take`, without its end, until that returns false. Other users fill such files
/// with what they like: of a line longer than 16 KiB only the beginning is given, of a file no more than 16 MiB are
/// read. A file that can't be read has no lines.
void forEachLine(const std::string& file, const std::function<bool(std::string_view line)>& take);

}  // namespace kestrav
