#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kestrav {

/// The length of the well-formed UTF-8 sequence that `text` begins with, 1 to 4 bytes; 0 when there is none.
std::size_t validUTF8SequenceLength(std::string_view text) noexcept;

/// How many bytes at the front of `text` are well-formed UTF-8 (RFC 3629: shortest forms only, no surrogates, nothing
/// above U+10FFFF). Equal to the size of `text` when all of it is; else the offset of the first bad sequence.
std::size_t validUTF8Length(std::string_view text) noexcept;

/// Whether all of `text` is well-formed UTF-8.
inline bool isValidUTF8(std::string_view text) noexcept {
    return validUTF8Length(text) == text.size();
}

/// `text` with U+FFFD in place of each byte that is not part of well-formed UTF-8.
std::string repairedUTF8(std::string_view text);

}  // namespace kestrav
