#include "json/value/readsAsTrue.h"

#include <algorithm>

namespace kestrav::json {
namespace {

bool equalsIgnoringCase(std::string_view text, std::string_view lowerCase) noexcept {
    return std::ranges::equal(text, lowerCase, [](char left, char right) {
        return (left >= 'A' && left <= 'Z' ? left - 'A' + 'a' : left) == right;
    });
}

}  // namespace

// frozen: F77
bool readsAsTrue(std::string_view text) noexcept {
    return equalsIgnoringCase(text, "true") || equalsIgnoringCase(text, "y") || equalsIgnoringCase(text, "t");
}

}  // namespace kestrav::json
