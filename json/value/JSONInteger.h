#pragma once

#include <concepts>
#include <cstdint>

namespace kestrav {

/// The integer types of up to 64 bits. Neither a boolean nor a character is a number, although the language counts them
/// among the integers.
template <class Integer>
concept JSONInteger = std::integral<Integer> && sizeof(Integer) <= sizeof(std::int64_t) &&
                      !std::same_as<Integer, bool> && !std::same_as<Integer, char> && !std::same_as<Integer, wchar_t> &&
                      !std::same_as<Integer, char8_t> && !std::same_as<Integer, char16_t> &&
                      !std::same_as<Integer, char32_t>;

}  // namespace kestrav
