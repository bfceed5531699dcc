#include "json/tree/Number.h"

#include <cmath>
#include <limits>

#include "base/stopProcess.h"
#include "json/tree/exactOrder.h"
#include "json/tree/writeNumber.h"

namespace kestrav {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTwoTo64 = 18446744073709551616.0;

std::int64_t withSign(double value) {
    if (std::isnan(value)) return 0;
    if (value >= kTwoTo63) return std::numeric_limits<std::int64_t>::max();
    if (value < -kTwoTo63) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

/// The digits before the point, or some value above 2^64 when there are more than 128 bits of them.
DecimalDigits wholeDigits(const Decimal& value) {
    constexpr DecimalDigits kMuch = DecimalDigits{1} << 100U;
    DecimalDigits digits = value.digits;
    for (std::int32_t step = 0; step < value.exponent && digits != 0; ++step) {
        if (digits > kMuch) return kMuch;
        digits *= 10;
    }
    for (std::int32_t step = 0; step > value.exponent && digits != 0; --step)
        digits /= 10;
    return digits;
}

std::int64_t withSign(const Decimal& value) {
    if (value.notANumber) return 0;
    constexpr DecimalDigits kMost = std::numeric_limits<std::int64_t>::max();
    const DecimalDigits digits = wholeDigits(value);
    if (digits > kMost) {
        return value.negative ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
    }
    const auto whole = static_cast<std::int64_t>(digits);
    return value.negative ? -whole : whole;
}

std::uint64_t withoutSign(const Decimal& value) {
    if (value.negative) return static_cast<std::uint64_t>(withSign(value));
    constexpr DecimalDigits kMost = std::numeric_limits<std::uint64_t>::max();
    const DecimalDigits digits = value.notANumber ? 0 : wholeDigits(value);
    return static_cast<std::uint64_t>(digits > kMost ? kMost : digits);
}

float narrowed(double value) {
    // Halfway between the largest float and the next one that there would be.
    constexpr double kInfiniteFrom = 340282356779733661637539395458142568448.0;
    if (std::isnan(value)) return std::numeric_limits<float>::quiet_NaN();
    if (std::fabs(value) >= kInfiniteFrom) {
        return value < 0 ? -std::numeric_limits<float>::infinity() : std::numeric_limits<float>::infinity();
    }
    constexpr double kMost = std::numeric_limits<float>::max();
    if (std::fabs(value) > kMost)
        return std::copysign(std::numeric_limits<float>::max(), static_cast<float>(value > 0 ? 1 : -1));
    return static_cast<float>(value);
}

bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

}  // namespace

std::int64_t Number::integer() const noexcept {
    require(kind_ == Kind::integer || kind_ == Kind::boolean);
    return bits_.integer;
}

std::uint64_t Number::unsignedInteger() const noexcept {
    require(kind_ == Kind::unsignedInteger);
    return bits_.unsignedInteger;
}

double Number::floating() const noexcept {
    require(kind_ == Kind::floating);
    return bits_.floating;
}

const Decimal& Number::decimal() const noexcept {
    require(kind_ == Kind::decimal);
    return bits_.decimal;
}

bool Number::isNotANumber() const noexcept {
    if (kind_ == Kind::decimal) return bits_.decimal.notANumber;
    return kind_ == Kind::floating && std::isnan(bits_.floating);
}

bool Number::isFinite() const noexcept {
    switch (kind_) {
        case Kind::boolean:
        case Kind::integer:
        case Kind::unsignedInteger:
            return true;
        case Kind::floating:
            return std::isfinite(bits_.floating);
        case Kind::decimal:
            return !bits_.decimal.notANumber;
    }
    return false;
}

std::weak_ordering Number::compare(const Number& other) const noexcept {
    return exactOrder(*this, other);
}

Number Number::decimalNumber(std::string_view text) noexcept {
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);
    return Number(scanDecimal(text).value);
}

bool Number::boolValue() const noexcept {
    switch (kind_) {
        case Kind::boolean:
        case Kind::integer:
            return bits_.integer != 0;
        case Kind::unsignedInteger:
            return bits_.unsignedInteger != 0;
        case Kind::floating:
            return bits_.floating != 0;
        case Kind::decimal:
            return bits_.decimal.digits != 0;
    }
    return false;
}

double Number::doubleValue() const noexcept {
    switch (kind_) {
        case Kind::boolean:
        case Kind::integer:
            return static_cast<double>(bits_.integer);
        case Kind::unsignedInteger:
            return static_cast<double>(bits_.unsignedInteger);
        case Kind::floating:
            return bits_.floating;
        case Kind::decimal:
            return nearestDouble(bits_.decimal);
    }
    return 0;
}

float Number::floatValue() const noexcept {
    switch (kind_) {
        case Kind::boolean:
        case Kind::integer:
            return static_cast<float>(bits_.integer);
        case Kind::unsignedInteger:
            return static_cast<float>(bits_.unsignedInteger);
        case Kind::floating:
            return narrowed(bits_.floating);
        case Kind::decimal:
            return nearestFloat(bits_.decimal);
    }
    return 0;
}

std::int64_t Number::longLongValue() const noexcept {
    switch (kind_) {
        case Kind::boolean:
        case Kind::integer:
            return bits_.integer;
        case Kind::unsignedInteger:
            return static_cast<std::int64_t>(bits_.unsignedInteger);
        case Kind::floating:
            return withSign(bits_.floating);
        case Kind::decimal:
            return withSign(bits_.decimal);
    }
    return 0;
}

std::uint64_t Number::unsignedLongLongValue() const noexcept {
    switch (kind_) {
        case Kind::boolean:
        case Kind::integer:
            return static_cast<std::uint64_t>(bits_.integer);
        case Kind::unsignedInteger:
            return bits_.unsignedInteger;
        case Kind::floating:
            if (bits_.floating >= kTwoTo64) return std::numeric_limits<std::uint64_t>::max();
            if (bits_.floating >= 0) return static_cast<std::uint64_t>(bits_.floating);
            return static_cast<std::uint64_t>(withSign(bits_.floating));
        case Kind::decimal:
            return withoutSign(bits_.decimal);
    }
    return 0;
}

std::string Number::stringValue() const {
    char text[kNumberText];
    switch (kind_) {
        case Kind::boolean:
        case Kind::integer:
            return {text, writeNumber(bits_.integer, text)};
        case Kind::unsignedInteger:
            return {text, writeNumber(bits_.unsignedInteger, text)};
        case Kind::floating:
            return {text, writeNumber(bits_.floating, text)};
        case Kind::decimal:
            return textOf(bits_.decimal);
    }
    return {};
}

}  // namespace kestrav
