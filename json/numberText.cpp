#include "json/numberText.h"

#include <charconv>
#include <cmath>
#include <utility>

namespace kestrav {
namespace {

/// Numbers with few digits behind the point, as most that people deal with have: a double whose nearest decimal of up
/// to 15 digits it is has no shorter one. A null pointer when it isn't such a number.
char* writeFewDecimals(double value, char* to) {
    constexpr double kMost = 1e11;  // with four digits behind the point there are 15
    constexpr std::pair<double, int> kPowers[] = {{10.0, 1}, {100.0, 2}, {1000.0, 3}, {10000.0, 4}};
    const double magnitude = std::fabs(value);
    if (magnitude >= kMost) return nullptr;
    for (const auto& [power, decimals] : kPowers) {
        const std::int64_t scaled = std::llrint(magnitude * power);
        if (static_cast<double>(scaled) / power != magnitude) continue;
        const auto whole = scaled / static_cast<std::int64_t>(power);
        auto rest = scaled % static_cast<std::int64_t>(power);
        if (std::signbit(value)) *to++ = '-';
        to = std::to_chars(to, to + kNumberText, whole).ptr;
        *to = '.';
        for (int at = decimals; at > 0; --at, rest /= 10)
            to[at] = static_cast<char>('0' + rest % 10);
        return to + decimals + 1;
    }
    return nullptr;
}

}  // namespace

char* writeNumber(std::int64_t value, char* to) {
    return std::to_chars(to, to + kNumberText, value).ptr;
}

char* writeNumber(std::uint64_t value, char* to) {
    return std::to_chars(to, to + kNumberText, value).ptr;
}

char* writeNumber(double value, char* to) {
    // From here on neighbouring doubles are more than one apart.
    constexpr double kExactIntegers = 9007199254740992.0;
    if (!std::isfinite(value)) return std::to_chars(to, to + kNumberText, value).ptr;
    if (std::fabs(value) >= kExactIntegers) {
        return std::to_chars(to, to + kNumberText, value, std::chars_format::scientific).ptr;
    }
    const auto whole = static_cast<std::int64_t>(value);
    const bool isWhole = static_cast<double>(whole) == value;
    if (isWhole && (whole != 0 || !std::signbit(value))) return writeNumber(whole, to);
    if (!isWhole) {
        if (char* const end = writeFewDecimals(value, to)) return end;
    }
    return std::to_chars(to, to + kNumberText, value).ptr;
}

}  // namespace kestrav
