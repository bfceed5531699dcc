#include "json/tree/exactOrder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>

namespace kestrav {
namespace {

__extension__ using Wide = __int128;

/// A double has at most 767 significant digits: 2^-1074 * (2^53 - 1).
constexpr int kMostDigits = 767;

/// A finite number's exact value: its digits from the first to the last that isn't zero, and what the first stands
/// for. None for zero. They lie in place, so that comparing never needs memory that might not be there.
struct ExactDigits {
    bool negative = false;
    std::int64_t leading = 0;
    std::size_t count = 0;
    std::array<char, kMostDigits> digits{};

    void add(std::string_view more) { count += more.copy(digits.data() + count, more.size()); }
    std::string_view text() const { return {digits.data(), count}; }
    void trimZeros() { count = text().find_last_not_of('0') + 1; }
};

ExactDigits exactDigits(double value) {
    std::array<char, kMostDigits + 16> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), std::fabs(value),
                                   std::chars_format::scientific, kMostDigits - 1)
                         .ptr;
    ExactDigits exact{.negative = std::signbit(value)};
    exact.add({text.data(), 1});
    exact.add({text.data() + 2, kMostDigits - 1});
    const char* power = text.data() + 2 + kMostDigits;  // behind the 'e'
    std::from_chars(*power == '+' ? power + 1 : power, end, exact.leading);
    exact.trimZeros();
    return exact;
}

ExactDigits exactDigits(const Decimal& value) {
    ExactDigits exact{.negative = value.negative};
    for (DecimalDigits rest = value.digits; rest != 0; rest /= 10)
        exact.digits[exact.count++] = static_cast<char>('0' + static_cast<int>(rest % 10));
    std::reverse(exact.digits.data(), exact.digits.data() + exact.count);
    exact.leading = value.exponent + static_cast<std::int64_t>(exact.count) - 1;
    exact.trimZeros();
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
    const int leftSign = left.count == 0 ? 0 : (left.negative ? -1 : 1);
    const int rightSign = right.count == 0 ? 0 : (right.negative ? -1 : 1);
    if (leftSign != rightSign) return leftSign <=> rightSign;
    if (leftSign == 0) return std::weak_ordering::equivalent;
    const auto magnitude = std::pair(left.leading, left.text()) <=> std::pair(right.leading, right.text());
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

std::weak_ordering exactOrder(const Number& left, const Number& right) noexcept {
    using Kind = Number::Kind;
    if (left.isNotANumber() || right.isNotANumber()) return right.isNotANumber() <=> left.isNotANumber();
    if (isWhole(left) && isWhole(right)) return wholeValue(left) <=> wholeValue(right);
    const bool isDouble = left.kind() == Kind::floating;
    if (isDouble && right.kind() == Kind::floating) return compareDoubles(left.floating(), right.floating());
    if (isInfinite(left)) return left.floating() < 0 ? std::weak_ordering::less : std::weak_ordering::greater;
    if (isInfinite(right)) return reversed(exactOrder(right, left));
    if (isWhole(left) && right.kind() == Kind::floating) return compareWhole(wholeValue(left), right.floating());
    if (isDouble && isWhole(right)) return reversed(exactOrder(right, left));
    return compareDigits(exactDigits(left), exactDigits(right));
}

}  // namespace kestrav
