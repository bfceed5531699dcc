#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "app/ApplicationError.h"

namespace kestrav {

/// Puts `content` in place of the file, in one step: it is written to a new file beside it, brought to the disk, and
/// given the name then. The file is readable for its owner alone. After an error what was there is untouched.
[[nodiscard]] std::optional<ApplicationError> replaceFile(const std::filesystem::path& file, std::string_view content);

}  // namespace kestrav
