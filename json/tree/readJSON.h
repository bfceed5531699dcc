#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <variant>

#include "json/tree/Tree.h"

namespace kestrav {

/// What is accepted. Flags, put together with `|`.
enum class ReadingOptions : unsigned {
    none = 0,            ///< the document is a list or a map
    allowFragments = 4,  ///< any value may stand at the top
};

/// Both sets of flags together.
constexpr ReadingOptions operator|(ReadingOptions left, ReadingOptions right) noexcept {
    return static_cast<ReadingOptions>(static_cast<unsigned>(left) | static_cast<unsigned>(right));
}
/// Whether `flag` is among the options.
constexpr bool contains(ReadingOptions options, ReadingOptions flag) noexcept {
    return (static_cast<unsigned>(options) & static_cast<unsigned>(flag)) == static_cast<unsigned>(flag);
}

/// Why a text is not JSON, and at which byte that showed.
struct ReadError {
    std::string message;     ///< without the place
    std::size_t offset = 0;  ///< in bytes, from the beginning
};

/// Lists and maps in each other; a document that goes deeper is an error.
inline constexpr std::size_t kMaxReadingDepth = 512;

/// Reads one JSON document (RFC 8259) that fills all of `bytes` but for white space. Nothing outside the grammar is
/// accepted: no byte-order mark, no invalid UTF-8, no lone surrogate, nothing behind the document.
///
/// Whole numbers that fit 64 bits become integers, and -0 a double. Other numbers of up to 17 significant digits become
/// the nearest double. What a double would lose becomes a Decimal: whole numbers of up to 38 digits, numbers of more
/// than 17 significant digits (kept to 38, rounded half to even beyond) and those beyond the range of doubles. A number
/// beyond the range of Decimal is an error. The last of several members with the same key wins.
std::variant<Tree, ReadError> readJSON(std::string_view bytes, ReadingOptions options = ReadingOptions::none);

}  // namespace kestrav
