#pragma once

#include <cstdint>

namespace kestrav::json {

/// How bytes stand for text.
enum class TextEncoding : std::uint8_t {
    ascii,              ///< bytes below 128 alone
    utf8,               ///< UTF-8, strictly
    isoLatin1,          ///< one byte a character, the first 256 of Unicode
    utf16BigEndian,     ///< UTF-16, high byte first, no byte-order mark
    utf16LittleEndian,  ///< UTF-16, low byte first, no byte-order mark
};

}  // namespace kestrav::json
