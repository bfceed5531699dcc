#pragma once

#include <cstddef>
#include <cstdint>

namespace kestrav {

/// Enough for the text of any number but a decimal, and for what is put behind it on the way.
inline constexpr std::size_t kNumberText = 48;

/// Each writes the shortest text that reads back as the same number to `to`, which has kNumberText bytes, and returns
/// its end. A double with a whole value below 2^53 is written without point or exponent, like the integer that it
/// equals; one that is larger always has an exponent, so that it is read as a double again.
char* writeNumber(std::int64_t value, char* to);
char* writeNumber(std::uint64_t value, char* to);
char* writeNumber(double value, char* to);

}  // namespace kestrav
