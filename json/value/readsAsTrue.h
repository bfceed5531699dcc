#pragma once

#include <string_view>

namespace kestrav::json {

/// Whether a text stands for true: "true", "y" or "t", in capitals or not.
bool readsAsTrue(std::string_view text) noexcept;

}  // namespace kestrav::json
