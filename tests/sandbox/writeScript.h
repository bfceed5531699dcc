#pragma once

#include <filesystem>
#include <string>

namespace kestrav {

/// Makes a program that anybody may run, of what the shell is to do, in the place of a file that may be there.
void writeScript(const std::filesystem::path& path, const std::string& script);

}  // namespace kestrav
