#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kestrav {

/// How bytes stand for text.
enum class TextEncoding : std::uint8_t { ascii, utf8, isoLatin1, utf16BigEndian, utf16LittleEndian };

/// The text that `bytes` stand for, as UTF-8. Nothing when they are not of that encoding.
std::optional<std::string> decodedText(std::string_view bytes, TextEncoding encoding);

}  // namespace kestrav
