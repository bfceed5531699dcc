#pragma once

#include <compare>
#include <string_view>

namespace kestrav::json {

/// The order of two texts for people, by the Unicode collation of no particular language. Texts that it takes for the
/// same but whose bytes differ are ordered by their bytes, so that only equal texts are equal. May be called on
/// several threads at once.
std::strong_ordering collate(std::string_view left, std::string_view right);

}  // namespace kestrav::json
