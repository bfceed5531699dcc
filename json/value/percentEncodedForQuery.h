#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kestrav::json {

/// `text` with every byte percent-encoded that may not stand in the query of a URL, percent signs included. Nothing
/// when `text` is not valid UTF-8.
std::optional<std::string> percentEncodedForQuery(std::string_view text);

}  // namespace kestrav::json
