#pragma once

#include <stdexcept>
#include <string>

#include "json/tree/Tree.h"

namespace kestrav {

/// How JSON is written. Flags, put together with `|`.
enum class WritingOptions : unsigned {
    none = 0,           ///< compact: no white space at all
    prettyPrinted = 1,  ///< one element or member a line, two spaces a level, up to 64 levels
};

/// Both sets of flags together.
constexpr WritingOptions operator|(WritingOptions left, WritingOptions right) noexcept {
    return static_cast<WritingOptions>(static_cast<unsigned>(left) | static_cast<unsigned>(right));
}
/// Whether `flag` is among the options.
constexpr bool contains(WritingOptions options, WritingOptions flag) noexcept {
    return (static_cast<unsigned>(options) & static_cast<unsigned>(flag)) == static_cast<unsigned>(flag);
}

/// Whether `tree` can be written: a list or map at the top, below it only lists, maps, texts and keys of valid UTF-8,
/// finite numbers, booleans and null.
bool isValidJSONObject(const Tree& tree);

/// Raised when something was to be written that has no form in JSON.
class InvalidJSONObject : public std::invalid_argument {
  public:
    InvalidJSONObject() : std::invalid_argument("the tree has parts that JSON can't express") {}
};

/// `tree` as UTF-8 JSON text. Maps are written in their order; numbers so that reading gives them back digit for digit.
/// Raises InvalidJSONObject for what isValidJSONObject() refuses. Any depth of nesting is written.
std::string dataWithJSONObject(const Tree& tree, WritingOptions options = WritingOptions::none);

}  // namespace kestrav
