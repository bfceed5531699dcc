#include "json/tree/Decimal.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <limits>
#include <type_traits>

namespace kestrav {
namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Collects digits into 38 of them and remembers what the rest says about rounding.
struct DigitCollector {
    DecimalDigits digits = 0;
    int kept = 0;
    std::int64_t dropped = 0;
    int firstDropped = 0;
    bool moreDropped = false;

    void add(int digit) {
        if (kept == 0 && digit == 0) return;
        if (kept < Decimal::kMaxDigits) {
            digits = digits * 10 + static_cast<unsigned>(digit);
            ++kept;
            return;
        }
        if (dropped == 0) {
            firstDropped = digit;
        } else {
            moreDropped = moreDropped || digit != 0;
        }
        ++dropped;
    }

    bool isInexact() const { return firstDropped != 0 || moreDropped; }

    /// Half to even. A carry may give a 39th digit, which is then a zero and is taken off with the other zeros.
    void round() {
        const bool up = firstDropped > 5 || (firstDropped == 5 && (moreDropped || digits % 2 == 1));
        if (up) ++digits;
    }
};

/// Reads an exponent at `at`, if a whole one stands there; its value is held within +-4 * 10^9.
std::int64_t scanExponent(std::string_view text, std::size_t& at) {
    std::size_t next = at;
    if (next >= text.size() || (text[next] != 'e' && text[next] != 'E')) return 0;
    ++next;
    const bool negative = next < text.size() && text[next] == '-';
    if (next < text.size() && (text[next] == '-' || text[next] == '+')) ++next;
    if (next >= text.size() || !isDigit(text[next])) return 0;
    std::int64_t value = 0;
    for (; next < text.size() && isDigit(text[next]); ++next) {
        value = std::min<std::int64_t>(value * 10 + (text[next] - '0'), 4'000'000'000);
    }
    at = next;
    return negative ? -value : value;
}

void finish(ScannedDecimal& scan, DigitCollector& collector, std::int64_t exponent) {
    collector.round();
    Decimal& value = scan.value;
    if (collector.digits == 0) {
        value = Decimal{};
        return;
    }
    int zeros = 0;
    for (; collector.digits % 10 == 0; ++zeros)
        collector.digits /= 10;
    exponent += collector.dropped + zeros;
    // A carry out of 38 nines leaves one digit more than were kept.
    const int left = std::max(collector.kept - zeros, 1);
    scan.significant = left;
    const std::int64_t leading = exponent + left - 1;
    scan.outOfRange = leading > Decimal::kMaxExponent || leading < -Decimal::kMaxExponent;
    if (scan.outOfRange) return;
    value.digits = collector.digits;
    value.exponent = static_cast<std::int32_t>(exponent);
    value.notANumber = false;
}

template <class Floating>
using BitsOf = std::conditional_t<sizeof(Floating) == 8, std::int64_t, std::int32_t>;

/// The floating number nearest to a text without a sign, its bits read as an integer: neighbours differ by one, and
/// behind the largest stands infinity.
template <class Floating>
BitsOf<Floating> nearestBits(std::string_view text, bool isLarge) noexcept {
    Floating result = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), result).ec != std::errc{} && isLarge) {
        result = std::numeric_limits<Floating>::infinity();
    }
    return std::bit_cast<BitsOf<Floating>>(result);
}

/// The same of a decimal's own digits. Needs no memory but the stack's.
template <class Floating>
BitsOf<Floating> nearestBits(const Decimal& value) noexcept {
    std::array<char, Decimal::kMaxDigits + 16> text{};
    char* const exponentAt = text.data() + Decimal::kMaxDigits + 1;
    char* first = exponentAt;
    DecimalDigits rest = value.digits;
    do {
        *--first = static_cast<char>('0' + static_cast<int>(rest % 10));
        rest /= 10;
    } while (rest != 0);
    *exponentAt = 'e';
    const char* end = std::to_chars(exponentAt + 1, text.data() + text.size(), value.exponent).ptr;
    return nearestBits<Floating>({first, end}, value.exponent > 0);
}

template <class Floating>
std::int8_t stepOf(std::string_view text, const Decimal& value) noexcept {
    const auto exact = nearestBits<Floating>(text, value.exponent > 0);
    return static_cast<std::int8_t>(exact - nearestBits<Floating>(value));
}

void setSteps(Decimal& value, std::string_view magnitude) noexcept {
    value.doubleStep = stepOf<double>(magnitude, value);
    value.floatStep = stepOf<float>(magnitude, value);
}

template <class Floating>
Floating nearest(const Decimal& value, std::int8_t step) noexcept {
    if (value.notANumber) return std::numeric_limits<Floating>::quiet_NaN();
    const auto bits = static_cast<BitsOf<Floating>>(nearestBits<Floating>(value) + step);
    const auto magnitude = std::bit_cast<Floating>(bits);
    return value.negative ? -magnitude : magnitude;
}

}  // namespace

double nearestDouble(const Decimal& value) noexcept {
    return nearest<double>(value, value.doubleStep);
}

float nearestFloat(const Decimal& value) noexcept {
    return nearest<float>(value, value.floatStep);
}

ScannedDecimal scanDecimal(std::string_view text) noexcept {
    ScannedDecimal scan;
    scan.value.notANumber = true;
    const std::size_t sign = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    scan.value.negative = sign == 1 && text[0] == '-';
    std::size_t at = sign;
    DigitCollector collector;
    std::int64_t exponent = 0;
    bool any = false;
    bool point = false;
    for (; at < text.size(); ++at) {
        if (text[at] == '.' && !point) {
            point = true;
            continue;
        }
        if (!isDigit(text[at])) break;
        any = true;
        const int digit = text[at] - '0';
        collector.add(digit);
        if (point) --exponent;
        if (!point && collector.kept > 0) ++scan.integerDigits;
    }
    if (!any) return scan;
    const std::size_t mantissaEnd = at;
    exponent += scanExponent(text, at);
    scan.isInteger = !point && at == mantissaEnd;
    scan.length = at;
    finish(scan, collector, exponent);
    if (collector.isInexact() && !scan.outOfRange) setSteps(scan.value, text.substr(sign, at - sign));
    return scan;
}

std::string textOf(const Decimal& value) {
    if (value.notANumber) return "NaN";
    std::array<char, Decimal::kMaxDigits + 2> buffer{};
    std::size_t first = buffer.size();
    DecimalDigits rest = value.digits;
    do {
        buffer[--first] = static_cast<char>('0' + static_cast<int>(rest % 10));
        rest /= 10;
    } while (rest != 0);
    std::string digits(buffer.data() + first, buffer.size() - first);
    const std::int64_t count = static_cast<std::int64_t>(digits.size());
    const std::int64_t beforePoint = count + value.exponent;
    std::string text = value.negative ? "-" : "";
    if (value.exponent >= 0 && beforePoint <= Decimal::kMaxDigits) {
        return text + digits + std::string(static_cast<std::size_t>(value.exponent), '0');
    }
    if (value.exponent < 0 && beforePoint > 0) {
        return text + digits.insert(static_cast<std::size_t>(beforePoint), 1, '.');
    }
    if (value.exponent < 0 && beforePoint > -6) {
        return text + "0." + std::string(static_cast<std::size_t>(-beforePoint), '0') + digits;
    }
    if (count > 1) digits.insert(1, 1, '.');
    const std::int64_t power = beforePoint - 1;
    return text + digits + (power < 0 ? "e-" : "e+") + std::to_string(power < 0 ? -power : power);
}

}  // namespace kestrav
