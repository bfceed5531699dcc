#pragma once

#include <compare>

#include "json/tree/Number.h"

namespace kestrav {

/// The order of the exact values, whatever the kinds: nothing is rounded, so 2^63 as an integer is equal to 2^63 as a
/// double and less than the next double. Not a number is below everything and equal to itself.
std::weak_ordering exactOrder(const Number& left, const Number& right) noexcept;

}  // namespace kestrav
