#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "json/value/TextEncoding.h"

namespace kestrav::json {

/// The text that `bytes` stand for, as UTF-8. Nothing when they are not of that encoding.
std::optional<std::string> decodedText(std::string_view bytes, TextEncoding encoding);

}  // namespace kestrav::json
