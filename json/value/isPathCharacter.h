#pragma once

namespace kestrav::json {

/// Whether a URL may hold this character in its path as it stands, unencoded: the letters, digits and marks of `pchar`
/// in RFC 3986, without the percent sign that begins an encoded byte.
bool isPathCharacter(char character) noexcept;

}  // namespace kestrav::json
