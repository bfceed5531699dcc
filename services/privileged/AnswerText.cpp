#include "services/privileged/AnswerText.h"

#include <cstdint>
#include <system_error>

namespace kestrav {
namespace {

struct Character {
    std::size_t length;  ///< bytes that it takes in the text
    std::uint32_t code;
    bool valid;
};

constexpr Character invalidByte{1, 0, false};

std::size_t lengthAfter(unsigned char first) {
    if (first < 0x80) return 1;
    if (first >= 0xc2 && first <= 0xdf) return 2;
    if (first >= 0xe0 && first <= 0xef) return 3;
    if (first >= 0xf0 && first <= 0xf4) return 4;
    return 0;
}

bool inUnicode(std::uint32_t code, std::size_t length) {
    constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xd800 && code <= 0xdfff;
    return code >= smallest[length] && code <= 0x10ffff && !surrogate;
}

Character firstCharacter(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = lengthAfter(first);
    if (length == 1) return {1, first, true};
    if (length == 0 || length > text.size()) return invalidByte;
    std::uint32_t code = first & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xc0U) != 0x80U) return invalidByte;
        code = (code << 6U) | (next & 0x3fU);
    }
    return inUnicode(code, length) ? Character{length, code, true} : invalidByte;
}

std::string shownCharacter(std::string_view text, const Character& character) {
    if (!character.valid) return "\xef\xbf\xbd";
    const bool control = character.code < 0x20 || (character.code >= 0x7f && character.code <= 0x9f);
    if (!control) return std::string(text.substr(0, character.length));
    constexpr char digits[] = "0123456789abcdef";
    return {'\\', 'x', digits[character.code >> 4U], digits[character.code & 0xfU]};
}

}  // namespace

std::string shown(std::string_view text, std::size_t bytes) {
    constexpr std::string_view more = "...";
    std::string result;
    std::size_t cutAt = 0;  // where "..." still fits behind whole characters
    while (!text.empty()) {
        const Character character = firstCharacter(text);
        result += shownCharacter(text, character);
        if (result.size() > bytes) return result.substr(0, cutAt).append(more.substr(0, bytes));
        if (result.size() + more.size() <= bytes) cutAt = result.size();
        text.remove_prefix(character.length);
    }
    return result;
}

std::string answerFor(const Problem& problem) {
    const std::string_view start = problem.kind == Problem::Kind::refused ? "Refused: " : "Failed: ";
    return shown(std::string(start) + problem.sentence, longestAnswer);
}

std::string systemWords(int errorNumber) {
    return std::generic_category().message(errorNumber);
}

}  // namespace kestrav
