#include "json/tree/writeNumber.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <dragonbox/dragonbox.h>

namespace kestrav {
namespace {

/// "00" to "99".
constexpr auto kPairs = [] {
    std::array<char, 200> pairs{};
    for (std::size_t at = 0; at < 100; ++at) {
        pairs[2 * at] = static_cast<char>('0' + at / 10);
        pairs[2 * at + 1] = static_cast<char>('0' + at % 10);
    }
    return pairs;
}();

constexpr auto kPowers = [] {
    std::array<std::uint64_t, 20> powers{1};
    for (std::size_t at = 1; at < powers.size(); ++at)
        powers[at] = powers[at - 1] * 10;
    return powers;
}();

void putPair(std::uint32_t value, char* to) {
    std::memcpy(to, kPairs.data() + std::size_t{2} * value, 2);
}

void putEight(std::uint32_t value, char* to) {
    const std::uint32_t high = value / 10'000;
    const std::uint32_t low = value % 10'000;
    putPair(high / 100, to);
    putPair(high % 100, to + 2);
    putPair(low / 100, to + 4);
    putPair(low % 100, to + 6);
}

/// How many digits; one for zero.
int digitCount(std::uint64_t value) {
    value |= 1U;
    // 1233 / 4096 is a little more than the logarithm of 2: right, or one too few.
    const auto guess = static_cast<std::size_t>(std::bit_width(value) * 1233 >> 12U);
    return static_cast<int>(guess) + (value >= kPowers[guess] ? 1 : 0);
}

/// All digits of `value`, which are `count`.
void putDigits(std::uint64_t value, int count, char* to) {
    constexpr std::uint64_t kEight = 100'000'000;
    char* at = to + count;
    for (; value >= kEight; value /= kEight)
        putEight(static_cast<std::uint32_t>(value % kEight), at -= 8);
    auto rest = static_cast<std::uint32_t>(value);
    for (; rest >= 100; rest /= 100)
        putPair(rest % 100, at -= 2);
    if (at - to == 2) return putPair(rest, to);
    *to = static_cast<char>('0' + rest);
}

char* putWhole(std::uint64_t value, char* to) {
    const int count = digitCount(value);
    putDigits(value, count, to);
    return to + count;
}

/// The digits of a double, which are 17 at most, with zeros in front: all of them are put in the same steps, whatever
/// their number, and what is wanted is copied in pieces of a fixed size.
class DoubleDigits {
  public:
    explicit DoubleDigits(std::uint64_t value) : count_(digitCount(value)) {
        constexpr std::uint64_t kEight = 100'000'000;
        text_[0] = static_cast<char>('0' + value / (kEight * kEight));
        putEight(static_cast<std::uint32_t>(value / kEight % kEight), text_.data() + 1);
        putEight(static_cast<std::uint32_t>(value % kEight), text_.data() + 9);
    }
    int count() const { return count_; }
    /// Copies 17 bytes, of which the digits from `first` on matter.
    void copy(int first, char* to) const { std::memcpy(to, text_.data() + kMost - count_ + first, kMost); }

  private:
    static constexpr int kMost = 17;
    static constexpr std::size_t kRoom = 34;  // what is copied begins within the digits

    std::array<char, kRoom> text_{};
    int count_;
};

/// d.ddde+XX, `power` being that of the first digit.
char* putScientific(const DoubleDigits& digits, int power, char* to) {
    digits.copy(0, to);
    digits.copy(1, to + 2);
    to[1] = '.';
    to += digits.count() > 1 ? digits.count() + 1 : 1;
    *to++ = 'e';
    *to++ = power < 0 ? '-' : '+';
    const auto magnitude = static_cast<std::uint32_t>(power < 0 ? -power : power);
    if (magnitude >= 100) *to++ = static_cast<char>('0' + magnitude / 100);
    putPair(magnitude % 100, to);
    return to + 2;
}

/// digits * 10^-decimals in the shorter of the two ways to write it, plain if they are equal or few digits stand behind
/// the point.
char* putFraction(const DoubleDigits& digits, int decimals, char* to) {
    constexpr int kAlwaysPlain = 4;
    const int count = digits.count();
    const int whole = count - decimals;
    if (whole > 0) {
        digits.copy(0, to);
        digits.copy(whole, to + whole + 1);
        to[whole] = '.';
        return to + count + 1;
    }
    const int power = whole - 1;
    // A power of three digits is too far from the point to be written plain anyway.
    const int scientific = count + (count > 1 ? 1 : 0) + 4;
    if (decimals > kAlwaysPlain && decimals + 2 > scientific) return putScientific(digits, power, to);
    const int zeros = decimals + 2 - count;
    std::fill_n(to, zeros, '0');
    to[1] = '.';
    digits.copy(0, to + zeros);
    return to + decimals + 2;
}

}  // namespace

char* writeNumber(std::int64_t value, char* to) {
    const auto magnitude = static_cast<std::uint64_t>(value);
    if (value >= 0) return putWhole(magnitude, to);
    *to = '-';
    return putWhole(0 - magnitude, to + 1);
}

char* writeNumber(std::uint64_t value, char* to) {
    return putWhole(value, to);
}

char* writeNumber(double value, char* to) {
    // From here on neighbouring doubles are more than one apart.
    constexpr double kExactIntegers = 9007199254740992.0;
    if (!std::isfinite(value)) return std::to_chars(to, to + kNumberText, value).ptr;
    *to = '-';
    to += std::signbit(value) ? 1 : 0;
    const double magnitude = std::fabs(value);
    if (magnitude < kExactIntegers) {
        const auto whole = static_cast<std::int64_t>(magnitude);
        if (static_cast<double>(whole) == magnitude) return putWhole(static_cast<std::uint64_t>(whole), to);
    }
    const auto shortest = jkj::dragonbox::to_decimal(magnitude, jkj::dragonbox::policy::sign::ignore);
    const DoubleDigits digits(shortest.significand);
    if (magnitude < kExactIntegers) return putFraction(digits, -shortest.exponent, to);
    return putScientific(digits, shortest.exponent + digits.count() - 1, to);
}

}  // namespace kestrav
