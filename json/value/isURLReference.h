#pragma once

#include <string_view>

namespace kestrav::json {

/// Whether a text is a `URI-reference` of RFC 3986: a URL, or a reference relative to one. An empty text is.
bool isURLReference(std::string_view text) noexcept;

}  // namespace kestrav::json
