#pragma once

#include <filesystem>
#include <string>

namespace kestrav {

/// Has a script of the shell run whenever `program` is, until the Sandbox in which that happens has gone. False if it
/// can't be put there.
[[nodiscard]] bool standInFor(const std::filesystem::path& program, const std::string& script);

}  // namespace kestrav
