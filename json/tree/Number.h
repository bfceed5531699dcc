#pragma once

#include <compare>
#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>

#include "json/tree/Decimal.h"

namespace kestrav {

/// A number that remembers how it came about: from a boolean, a signed or unsigned 64-bit integer, a double, or as a
/// decimal of up to 38 digits. A plain value of a few words. Single-precision numbers are kept as the
/// double of the same value.
class Number {
  public:
    /// What it was made from.
    enum class Kind : std::uint8_t { boolean, integer, unsignedInteger, floating, decimal };

    /// Zero, or the given value.
    Number() noexcept : Number(std::int64_t{0}) {}
    explicit Number(std::same_as<bool> auto value) noexcept : kind_(Kind::boolean), bits_{.integer = value ? 1 : 0} {}
    template <std::signed_integral Integer>
    explicit Number(Integer value) noexcept : kind_(Kind::integer),
                                              bits_{.integer = value} {}
    template <std::unsigned_integral Integer>
    requires(!std::same_as<Integer, bool>) explicit Number(Integer value) noexcept
        : kind_(Kind::unsignedInteger),
          bits_{.unsignedInteger = value} {}
    explicit Number(double value) noexcept : kind_(Kind::floating), bits_{.floating = value} {}
    explicit Number(const Decimal& value) noexcept : kind_(Kind::decimal), bits_{.decimal = value} {}

    /// What it was made from.
    Kind kind() const noexcept { return kind_; }

    /// What the number was made from. Only the one that `kind()` names may be asked for; another stops the process.
    std::int64_t integer() const noexcept;  ///< also for a boolean, as 1 or 0
    std::uint64_t unsignedInteger() const noexcept;
    double floating() const noexcept;
    const Decimal& decimal() const noexcept;

    /// The decimal number at the front of `text`: white space, a sign, digits with a point, an exponent; what follows
    /// is ignored, as in "12.5 V". 38 digits are exact. A decimal that is not a number when there is none or it is out
    /// of a Decimal's range.
    static Number decimalNumber(std::string_view text) noexcept;

    /// Whether it was made from a boolean. The integer 1 is no boolean.
    bool isBool() const noexcept { return kind_ == Kind::boolean; }

    /// Conversions. None fails, and all are defined for every number:
    /// - integers from integers keep the lowest bits, so 300 is 44 in eight bits and -1 is 2^64-1 without a sign;
    /// - integers from doubles and decimals drop the fraction and stay within 64 bits, signed ones at -2^63 and 2^63-1,
    ///   unsigned ones at 2^64-1; a negative one without a sign is first converted with one; what is not a number is 0;
    /// - narrower integers keep the lowest bits of the signed 64-bit integer;
    /// - doubles and floats are the nearest, infinite beyond their range, a decimal that is not a number NaN.
    bool boolValue() const noexcept;  ///< not zero
    double doubleValue() const noexcept;
    float floatValue() const noexcept;
    std::int64_t integerValue() const noexcept { return longLongValue(); }
    std::uint64_t unsignedIntegerValue() const noexcept { return unsignedLongLongValue(); }
    // frozen: F79
    std::int8_t charValue() const noexcept { return static_cast<std::int8_t>(longLongValue()); }
    std::uint8_t unsignedCharValue() const noexcept { return static_cast<std::uint8_t>(longLongValue()); }
    std::int16_t shortValue() const noexcept { return static_cast<std::int16_t>(longLongValue()); }
    std::uint16_t unsignedShortValue() const noexcept { return static_cast<std::uint16_t>(longLongValue()); }
    std::int32_t intValue() const noexcept { return static_cast<std::int32_t>(longLongValue()); }
    std::uint32_t unsignedIntValue() const noexcept { return static_cast<std::uint32_t>(longLongValue()); }
    std::int64_t longLongValue() const noexcept;
    std::uint64_t unsignedLongLongValue() const noexcept;

    /// The shortest text that means this number: "42", "0.1", "1e+300", decimals in all their digits. A boolean is "1"
    /// or "0"; "inf", "-inf", "nan" and "NaN" (the decimal) are what JSON can't express.
    std::string stringValue() const;

    /// The order of the exact values, whatever the kinds; see exactOrder().
    std::weak_ordering compare(const Number& other) const noexcept;
    /// Equal in value; a boolean equals no other number.
    friend bool operator==(const Number& left, const Number& right) noexcept {
        if ((left.kind_ == Kind::boolean) != (right.kind_ == Kind::boolean)) return false;
        return left.compare(right) == std::weak_ordering::equivalent;
    }

    /// Whether it is a double or decimal that stands for no number.
    bool isNotANumber() const noexcept;
    /// Neither infinite nor not a number: what JSON can express.
    bool isFinite() const noexcept;

  private:
    union Bits {
        std::int64_t integer;
        std::uint64_t unsignedInteger;
        double floating;
        Decimal decimal;
    };

    Kind kind_;
    Bits bits_;
};

}  // namespace kestrav
