#include <array>
#include <charconv>
#include <cmath>
#include <string>
#include <utility>

#include "json/Number.h"

namespace kestrav {
namespace {

__extension__ using Wide = __int128;

/// A finite number's exact value: its digits from the first to the last that isn't zero, and what the first stands
/// for. Empty for zero.
struct ExactDigits {
    bool negative = false;
    std::int64_t leading = 0;
    std::string digits;
};

void trimZeros(std::string& digits) {
    digits.erase(digits.find_last_not_of('0') + 1);
}

ExactDigits exactDigits(double value) {
    // A double has at most 767 significant digits: 2^-1074 * (2^53 - 1).
    constexpr int kMostDigits = 767;
    std::array<char, kMostDigits + 16> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), std::fabs(value),
                                   std::chars_format::scientific, kMostDigits - 1)
                         .ptr;
    ExactDigits exact{std::signbit(value), 0, {text[0]}};
    const std::string_view rest(text.data() + 2, static_cast<std::size_t>(end - text.data()) - 2);
    exact.digits += rest.substr(0, kMostDigits - 1);
    const char* power = rest.data() + kMostDigits;  // behind the 'e'
    std::from_chars(*power == '+' ? power + 1 : power, end, exact.leading);
    trimZeros(exact.digits);
    return exact;
}

ExactDigits exactDigits(const Decimal& value) {
    ExactDigits exact{value.negative, value.exponent, {}};
    for (DecimalDigits rest = value.digits; rest != 0; rest /= 10) {
        exact.digits.insert(exact.digits.begin(), static_cast<char>('0' + static_cast<int>(rest % 10)));
    }
    exact.leading += static_cast<std::int64_t>(exact.digits.size()) - 1;
    trimZeros(exact.digits);
    return exact;
}

ExactDigits exactDigits(const Number& number) {
    switch (number.kind()) {
        case Number::Kind::boolean:
        case Number::Kind::integer: {
            const std::int64_t value = number.integer();
            const auto magnitude = static_cast<std::uint64_t>(value);
            return exactDigits(Decimal{value < 0 ? 0 - magnitude : magnitude, 0, value < 0, false});
        }
        case Number::Kind::unsignedInteger:
            return exactDigits(Decimal{number.unsignedInteger(), 0, false, false});
        case Number::Kind::floating:
            return exactDigits(number.floating());
        case Number::Kind::decimal:
            return exactDigits(number.decimal());
    }
    return {};
}

std::weak_ordering reversed(std::weak_ordering order) {
    if (std::is_lt(order)) return std::weak_ordering::greater;
    return std::is_gt(order) ? std::weak_ordering::less : order;
}

std::weak_ordering compareDigits(const ExactDigits& left, const ExactDigits& right) {
    const int leftSign = left.digits.empty() ? 0 : (left.negative ? -1 : 1);
    const int rightSign = right.digits.empty() ? 0 : (right.negative ? -1 : 1);
    if (leftSign != rightSign) return leftSign <=> rightSign;
    if (leftSign == 0) return std::weak_ordering::equivalent;
    const auto magnitude = std::pair(left.leading, std::string_view(left.digits)) <=>
                           std::pair(right.leading, std::string_view(right.digits));
    return leftSign > 0 ? magnitude : reversed(magnitude);
}

bool isWhole(const Number& number) {
    return number.kind() != Number::Kind::floating && number.kind() != Number::Kind::decimal;
}

Wide wholeValue(const Number& number) {
    if (number.kind() == Number::Kind::unsignedInteger) return number.unsignedInteger();
    return number.integer();
}

/// Against a double that is not NaN.
std::weak_ordering compareWhole(Wide whole, double value) {
    constexpr double kBeyondEvery64Bits = 36893488147419103232.0;  // 2^65
    if (value >= kBeyondEvery64Bits) return std::weak_ordering::less;
    if (value <= -kBeyondEvery64Bits) return std::weak_ordering::greater;
    const auto truncated = static_cast<Wide>(value);
    if (whole != truncated) return whole < truncated ? std::weak_ordering::less : std::weak_ordering::greater;
    const double fraction = value - static_cast<double>(truncated);
    if (fraction == 0) return std::weak_ordering::equivalent;
    return fraction > 0 ? std::weak_ordering::less : std::weak_ordering::greater;
}

std::weak_ordering compareDoubles(double left, double right) {
    if (left == right) return std::weak_ordering::equivalent;
    return left < right ? std::weak_ordering::less : std::weak_ordering::greater;
}

bool isInfinite(const Number& number) {
    return number.kind() == Number::Kind::floating && std::isinf(number.floating());
}

}  // namespace

std::weak_ordering Number::compare(const Number& other) const noexcept {
    if (isNotANumber() || other.isNotANumber()) return other.isNotANumber() <=> isNotANumber();
    if (isWhole(*this) && isWhole(other)) {
        const Wide left = wholeValue(*this);
        const Wide right = wholeValue(other);
        if (left == right) return std::weak_ordering::equivalent;
        return left < right ? std::weak_ordering::less : std::weak_ordering::greater;
    }
    if (kind_ == Kind::floating && other.kind_ == Kind::floating) {
        return compareDoubles(bits_.floating, other.bits_.floating);
    }
    if (isInfinite(*this)) return bits_.floating < 0 ? std::weak_ordering::less : std::weak_ordering::greater;
    if (isInfinite(other)) return reversed(other.compare(*this));
    if (isWhole(*this) && other.kind_ == Kind::floating) return compareWhole(wholeValue(*this), other.bits_.floating);
    if (kind_ == Kind::floating && isWhole(other)) return reversed(other.compare(*this));
    return compareDigits(exactDigits(*this), exactDigits(other));
}

}  // namespace kestrav
