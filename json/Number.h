#pragma once

#include <compare>
#include <concepts>
#include <cstdint>
#include <string>

#include "json/Decimal.h"

namespace kestrav {

/// A number that remembers how it came about: from a boolean, a signed or unsigned 64-bit integer, a double, or as a
/// decimal of up to 38 digits. A plain value of a few words.
class Number {
  public:
    enum class Kind : std::uint8_t { boolean, integer, unsignedInteger, floating, decimal };

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

    Kind kind() const noexcept { return kind_; }

    /// What the number was made from. Only the one that `kind()` names may be asked for; another stops the process.
    std::int64_t integer() const noexcept;  ///< also for a boolean, as 1 or 0
    std::uint64_t unsignedInteger() const noexcept;
    double floating() const noexcept;
    const Decimal& decimal() const noexcept;

    /// The order of the exact values, whatever the kinds: nothing is rounded, so 2^63 as an integer is equal to 2^63
    /// as a double and less than the next double. Not a number is below everything and equal to itself.
    std::weak_ordering compare(const Number& other) const noexcept;
    /// Equal in value; a boolean equals no other number.
    friend bool operator==(const Number& left, const Number& right) noexcept {
        if ((left.kind_ == Kind::boolean) != (right.kind_ == Kind::boolean)) return false;
        return left.compare(right) == std::weak_ordering::equivalent;
    }

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
