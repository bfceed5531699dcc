#include "json/value/percentEncodedForQuery.h"

#include "base/utf8.h"
#include "json/value/isPathCharacter.h"

namespace kestrav::json {

std::optional<std::string> percentEncodedForQuery(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    if (!isValidUTF8(text)) return std::nullopt;
    std::string encoded;
    encoded.reserve(text.size());
    for (const char character : text) {
        if (isPathCharacter(character) || character == '/' || character == '?') {
            encoded += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            encoded += {'%', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
        }
    }
    return encoded;
}

}  // namespace kestrav::json
