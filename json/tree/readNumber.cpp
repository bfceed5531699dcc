#include "json/tree/readNumber.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fast_float/fast_float.h>
#include <limits>
#include <system_error>

namespace kestrav {
namespace {

/// Digits that every double keeps; a longer number is more than the double nearest to it.
constexpr std::int64_t kDoubleDigits = 17;
constexpr std::uint64_t kMostForDouble = 100'000'000'000'000'000;  // 10^17
/// So many digits fit 64 bits without a sign.
constexpr std::int64_t kMostDigits = 19;

/// So many digits in front are looked at one by one: most whole numbers, and whole parts, have no more.
constexpr std::ptrdiff_t kFew = 3;

/// What was found of a number. `digits` wraps when there are more than 19 that matter; then it isn't used.
struct Scan {
    const char* begin;
    bool negative;
    std::uint64_t digits;      ///< all of them, without the point
    std::int64_t count;        ///< how many, zeros in front included
    std::int64_t behindPoint;  ///< how many of them stand behind the point
    std::int64_t exponent;
};

unsigned digitAt(const char* at) {
    return static_cast<unsigned>(static_cast<unsigned char>(*at)) - '0';
}

bool isDigit(const char* at, const char* end) {
    return at != end && digitAt(at) < 10;
}

/// Adds the digits from `at` on, eight at once. Where they end is found in all eight bytes together, and the bytes
/// behind them are shifted out: a branch for each digit would be guessed wrong once for every number.
[[gnu::always_inline]] inline const char* addDigits(const char* at, const char* end, std::uint64_t& digits) {
    static constexpr std::uint64_t kPowers[8] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000};
    std::uint64_t eight = 0;
    while (end - at >= 8) {
        std::memcpy(&eight, at, sizeof eight);
        eight ^= 0x3030303030303030U;
        const std::uint64_t others = ((eight + 0x7676767676767676U) | eight) & 0x8080808080808080U;
        if (others == 0) {
            digits = digits * 100'000'000 + fast_float::parse_eight_digits_unrolled(eight + 0x3030303030303030U);
            at += sizeof eight;
            continue;
        }
        const int bits = std::countr_zero(others) & 0x78;
        eight = (eight << (56 - bits)) << 8U;
        digits = digits * kPowers[bits / 8] + fast_float::parse_eight_digits_unrolled(eight + 0x3030303030303030U);
        return at + bits / 8;
    }
    for (; isDigit(at, end); ++at)
        digits = digits * 10 + digitAt(at);
    return at;
}

/// How many digits matter: without the zeros in front.
std::int64_t significant(const Scan& scan) {
    std::int64_t zeros = 0;
    for (const char* at = scan.begin + (scan.negative ? 1 : 0); zeros < scan.count && (*at == '0' || *at == '.'); ++at)
        zeros += *at == '0' ? 1 : 0;
    return scan.count - zeros;
}

/// The exponent behind an 'e'. One that no number in range has ends the number at the digit that shows it, unless the
/// number is zero with whatever exponent.
const char* readExponent(const char* at, const char* end, Scan& scan, ReadFailure& failure) {
    if (at == end) return failure.incomplete(end);
    const bool negative = *at == '-';
    if (*at == '-' || *at == '+') ++at;
    if (!isDigit(at, end)) return failure.syntax(at);
    for (; isDigit(at, end); ++at) {
        scan.exponent = scan.exponent * 10 + digitAt(at);
        if (scan.exponent <= std::numeric_limits<std::int32_t>::max()) continue;
        if (significant(scan) > 0) return failure.note("number out of range", at);
        scan.exponent = 0;
    }
    if (negative) scan.exponent = -scan.exponent;
    return at;
}

/// digits * 10^exponent as the nearest double, when there is a finite one that isn't zero; else not a number.
inline double nearest(std::uint64_t digits, std::int64_t exponent) {
    using Format = fast_float::binary_format<double>;
    const fast_float::adjusted_mantissa found = fast_float::compute_float<Format>(exponent, digits);
    const bool isZero = found.mantissa == 0 && found.power2 == 0;
    if (found.power2 < 0 || found.power2 == Format::infinite_power() || isZero) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const auto bits = found.mantissa | static_cast<std::uint64_t>(found.power2) << Format::mantissa_explicit_bits();
    return std::bit_cast<double>(bits);
}

/// Numbers of many digits, or beyond the range of doubles.
[[gnu::noinline]] const char* readLong(const Scan& scan, const char* end, TreeWords& words, ReadFailure& failure) {
    const std::string_view text(scan.begin, static_cast<std::size_t>(end - scan.begin));
    const ScannedDecimal decimal = scanDecimal(text);
    if (decimal.outOfRange) return failure.note("number out of range", end);
    const bool isLongInteger = decimal.isInteger && decimal.integerDigits <= Decimal::kMaxDigits;
    double value = 0;
    const bool fits = std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc{};
    if (fits && !isLongInteger && decimal.significant <= kDoubleDigits) {
        words = TreeNodes::floating(value);
    } else {
        words = TreeNodes::give(Tree(decimal.value));
    }
    return end;
}

/// An integer of twenty digits may still fit 64 bits without a sign.
[[gnu::noinline]] const char* readLongInteger(const Scan& scan, const char* end, TreeWords& words,
                                              ReadFailure& failure) {
    std::uint64_t value = 0;
    if (scan.negative || std::from_chars(scan.begin, end, value).ec != std::errc{}) {
        return readLong(scan, end, words, failure);
    }
    words = TreeNodes::unsignedInteger(value);
    return end;
}

[[gnu::always_inline]] inline const char* finishInteger(const Scan& scan, const char* end, TreeWords& words,
                                                        ReadFailure& failure) {
    constexpr std::uint64_t kHalf = std::uint64_t{1} << 63U;
    if (scan.count > kMostDigits) return readLongInteger(scan, end, words, failure);
    if (scan.negative) {
        if (scan.digits > kHalf) return readLong(scan, end, words, failure);
        // An integer has no negative zero.
        const auto value = static_cast<std::int64_t>(0 - scan.digits);
        words = value == 0 ? TreeNodes::floating(-0.0) : TreeNodes::integer(value);
    } else {
        words = scan.digits < kHalf ? TreeNodes::integer(static_cast<std::int64_t>(scan.digits))
                                    : TreeNodes::unsignedInteger(scan.digits);
    }
    return end;
}

inline const char* finishDouble(const Scan& scan, const char* end, TreeWords& words, ReadFailure& failure) {
    if (scan.count > kMostDigits && significant(scan) > kMostDigits) return readLong(scan, end, words, failure);
    if (scan.digits == 0) {
        words = TreeNodes::floating(scan.negative ? -0.0 : 0.0);
        return end;
    }
    if (scan.digits >= kMostForDouble) return readLong(scan, end, words, failure);
    const double value = nearest(scan.digits, scan.exponent - scan.behindPoint);
    if (std::isnan(value)) return readLong(scan, end, words, failure);
    words = TreeNodes::floating(scan.negative ? -value : value);
    return end;
}

}  // namespace

const char* readNumber(const char* at, const char* end, TreeWords& words, ReadFailure& failure) {
    const char* const begin = at;
    const bool negative = *at == '-';
    if (negative) ++at;
    if (at == end) return failure.incomplete(end);
    if (digitAt(at) > 9) return failure.syntax(at);
    const char* const first = at;
    std::uint64_t digits = digitAt(at++);
    const char* const wholeEnd = digits == 0 ? at : end;  // behind a zero in front there are no more
    const char* const few = wholeEnd - at > kFew ? at + kFew : wholeEnd;
    for (; isDigit(at, few); ++at)
        digits = digits * 10 + digitAt(at);
    if (at == few) at = addDigits(at, wholeEnd, digits);
    const std::int64_t whole = at - first;
    const bool hasPoint = at != end && *at == '.';
    if (!hasPoint && (at == end || (*at | 0x20) != 'e')) {
        return finishInteger({begin, negative, digits, whole, 0, 0}, at, words, failure);
    }
    std::int64_t behindPoint = 0;
    if (hasPoint) {
        const char* const point = ++at;
        at = addDigits(at, end, digits);
        behindPoint = at - point;
        if (behindPoint == 0) return failure.syntax(at);
    }
    Scan scan{begin, negative, digits, whole + behindPoint, behindPoint, 0};
    if (at != end && (*at | 0x20) == 'e') at = readExponent(at + 1, end, scan, failure);
    return at == nullptr ? nullptr : finishDouble(scan, at, words, failure);
}

}  // namespace kestrav
