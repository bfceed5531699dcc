#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kestrav {

/// The digits of a decimal as one integer.
__extension__ using DecimalDigits = unsigned __int128;

/// A decimal number: digits * 10^exponent, with its sign. Up to 38 significant digits are exact, which is what fits
/// 128 bits; longer numbers are rounded half to even. Always in lowest terms: `digits` does not end in a zero, and
/// zero is {0, 0}. The leading digit stands for at most 10^999999999 and at least 10^-999999999.
/// `notANumber` is the result of reading a text that holds no number.
struct Decimal {
    DecimalDigits digits = 0;   ///< without its sign
    std::int32_t exponent = 0;  ///< of ten
    bool negative = false;      ///< whether it is below zero
    bool notANumber = false;    ///< whether it is none; the rest doesn't count then
    /// How many doubles, or floats, the one nearest to the number as it was written lies above the one nearest to
    /// `digits`: -1, 0 or 1, leaving the sign aside. Only numbers of more than 38 digits know anything but 0: what is
    /// dropped of them must not be rounded a second time.
    std::int8_t doubleStep = 0;
    std::int8_t floatStep = 0;

    /// The limits above.
    static constexpr int kMaxDigits = 38;
    static constexpr std::int64_t kMaxExponent = 999'999'999;
};

/// What was found at the front of a text.
struct ScannedDecimal {
    Decimal value;                   ///< not a number when `length` is 0 or `outOfRange`
    std::size_t length = 0;          ///< bytes that belong to the number; 0 when there is none
    std::int64_t significant = 0;    ///< how many digits `value` has
    std::int64_t integerDigits = 0;  ///< digits before the point, leading zeros left out
    bool isInteger = true;           ///< neither a point nor an exponent
    bool outOfRange = false;         ///< the leading digit stands too high or too low for a Decimal
};

/// Reads the longest number at the front of `text`: a sign, digits with at most one point among or around them, an
/// exponent. No white space is skipped.
ScannedDecimal scanDecimal(std::string_view text) noexcept;

/// The nearest double or float: infinite beyond its range, NaN for what is not a number.
double nearestDouble(const Decimal& value) noexcept;
float nearestFloat(const Decimal& value) noexcept;

/// Plain digits while the point lies within or near them ("12.5", "-0.001"), else with an exponent ("1.5e+400").
/// Whole numbers of up to 38 digits are always plain. "NaN" when not a number.
std::string textOf(const Decimal& value);

}  // namespace kestrav
