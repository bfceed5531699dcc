#include "json/Number.h"

#include <cmath>

#include "base/stopProcess.h"

namespace kestrav {

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

}  // namespace kestrav
