#pragma once

#include <concepts>
#include <cstdint>

#include "json/tree/Number.h"
#include "json/value/JSONInteger.h"

namespace kestrav {

/// The native types that a number is read as and stored from: float, double, and every integer type of up to 64 bits.
/// The platform's integer and unsigned integer are the 64-bit ones.
template <class Native>
concept JSONNative = JSONInteger<Native> || std::same_as<Native, double> || std::same_as<Native, float>;

/// `number` in that type. See Number for what doesn't fit: integers keep their lowest bits, doubles stay within 64
/// bits.
template <JSONNative Native>
Native nativeValue(const Number& number) noexcept {
    if constexpr (std::same_as<Native, double>)
        return number.doubleValue();
    else if constexpr (std::same_as<Native, float>)
        return number.floatValue();
    else if constexpr (std::unsigned_integral<Native> && sizeof(Native) == sizeof(std::uint64_t))
        return static_cast<Native>(number.unsignedLongLongValue());
    else
        return static_cast<Native>(number.longLongValue());
}

}  // namespace kestrav
