#pragma once

#include <cstddef>
#include <string_view>

namespace kestrav::json {

/// A place in a text. A plain value.
struct TextPlace {
    std::size_t offset = 0;  ///< bytes in front of it
    std::size_t line = 1;    ///< counted from 1; a line ends with "\n", "\r\n" or "\r"
    std::size_t column = 1;  ///< characters (not bytes) from the beginning of the line, counted from 1

    /// The place `offset` bytes into `text`, which is UTF-8 up to there; its end when it is shorter.
    static TextPlace of(std::string_view text, std::size_t offset) noexcept;

    /// The same place.
    friend bool operator==(const TextPlace&, const TextPlace&) = default;
};

}  // namespace kestrav::json
