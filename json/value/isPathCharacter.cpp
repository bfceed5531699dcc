#include "json/value/isPathCharacter.h"

#include <string_view>

namespace kestrav::json {

bool isPathCharacter(char character) noexcept {
    constexpr std::string_view kAllowed =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~!$&'()*+,;=:@";
    return kAllowed.find(character) != std::string_view::npos;
}

}  // namespace kestrav::json
