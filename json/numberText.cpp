#include "json/numberText.h"

#include <charconv>
#include <cmath>

namespace kestrav {

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
    return std::to_chars(to, to + kNumberText, value).ptr;
}

}  // namespace kestrav
