#include "json/numberText.h"

#include <charconv>
#include <cmath>

namespace kestrav {
namespace {

/// From here on neighbouring doubles are more than one apart.
constexpr double kExactIntegers = 9007199254740992.0;

char* writeDouble(double value, char* to) {
    char* const end = to + kNumberText;
    if (std::fabs(value) >= kExactIntegers) return std::to_chars(to, end, value, std::chars_format::scientific).ptr;
    const auto whole = static_cast<std::int64_t>(value);
    const bool isWhole = static_cast<double>(whole) == value;
    if (isWhole && (whole != 0 || !std::signbit(value))) return std::to_chars(to, end, whole).ptr;
    return std::to_chars(to, end, value).ptr;
}

}  // namespace

char* writeNumber(const Number& number, char* to) {
    char* const end = to + kNumberText;
    switch (number.kind()) {
        case Number::Kind::boolean:
        case Number::Kind::integer:
            return std::to_chars(to, end, number.integer()).ptr;
        case Number::Kind::unsignedInteger:
            return std::to_chars(to, end, number.unsignedInteger()).ptr;
        case Number::Kind::floating:
            return std::isfinite(number.floating()) ? writeDouble(number.floating(), to)
                                                    : std::to_chars(to, end, number.floating()).ptr;
        case Number::Kind::decimal:
            break;
    }
    return to;
}

}  // namespace kestrav
