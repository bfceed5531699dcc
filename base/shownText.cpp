#include "base/shownText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>

#include "base/utf8.h"

namespace kestrav {
namespace {

constexpr std::string_view kLowerDigits = "0123456789abcdef";
constexpr std::string_view kUpperDigits = "0123456789ABCDEF";

std::string digitsOf(char byte, std::string_view digits) {
    const auto value = static_cast<unsigned char>(byte);
    return {digits[value >> 4U], digits[value & 15U]};
}

bool isASCIIControl(char byte) {
    return static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f;
}

enum class Kind { harmless, backslash, control, misleading, noCharacter };

struct Character {
    std::string_view bytes;
    Kind kind;
};

struct Range {
    char32_t first;
    char32_t last;
};

// Unicode's controls of direction, its line and paragraph separators, and its characters without a shape.
constexpr std::array kMisleading{
    Range{0xad, 0xad},        // soft hyphen
    Range{0x34f, 0x34f},      // combining grapheme joiner
    Range{0x61c, 0x61c},      // Arabic letter mark
    Range{0x115f, 0x1160},    // fillers of Hangul
    Range{0x17b4, 0x17b5},    // inherent vowels of Khmer
    Range{0x180e, 0x180e},    // Mongolian vowel separator
    Range{0x200b, 0x200b},    // zero width space
    Range{0x200e, 0x200f},    // left-to-right and right-to-left mark
    Range{0x2028, 0x202e},    // line, paragraph; embeddings and overrides of direction
    Range{0x2060, 0x206f},    // word joiner, invisible operators, isolates of direction
    Range{0x3164, 0x3164},    // filler of Hangul
    Range{0xfeff, 0xfeff},    // zero width no-break space
    Range{0xffa0, 0xffa0},    // filler of Hangul, half as wide
    Range{0xfff9, 0xfffb},    // annotations
    Range{0x1bca0, 0x1bca3},  // controls of shorthand
    Range{0x1d173, 0x1d17a},  // controls of music
    Range{0xe0000, 0xe007f},  // tags
};

bool isControl(char32_t character) {
    // U+0080 to U+009F are among them: some terminals take U+009B for the beginning of a command.
    return character < 0x20 || (character >= 0x7f && character < 0xa0);
}

/// Of one well-formed sequence.
char32_t codePoint(std::string_view sequence) {
    constexpr std::array<unsigned, 5> kFirstByteMask{0, 0x7f, 0x1f, 0x0f, 0x07};
    char32_t code = static_cast<unsigned char>(sequence[0]) & kFirstByteMask.at(sequence.size());
    for (const char byte : sequence.substr(1))
        code = (code << 6U) | (static_cast<unsigned char>(byte) & 0x3fU);
    return code;
}

Kind kindOf(std::string_view character) {
    if (character == "\\") return Kind::backslash;
    const char32_t code = codePoint(character);
    if (isControl(code)) return Kind::control;
    return misleadsInALine(code) ? Kind::misleading : Kind::harmless;
}

/// Takes the first character off `text`, which is not empty; of what is not UTF-8 one byte.
Character takeCharacter(std::string_view& text) {
    const std::size_t length = validUTF8SequenceLength(text);
    const std::string_view bytes = text.substr(0, std::max<std::size_t>(length, 1));
    text.remove_prefix(bytes.size());
    return {bytes, length == 0 ? Kind::noCharacter : kindOf(bytes)};
}

std::string numbered(std::string_view character) {
    char digits[8];
    const auto end =
        std::to_chars(std::begin(digits), std::end(digits), static_cast<std::uint32_t>(codePoint(character)), 16);
    return "\\u{" + std::string(digits, end.ptr) + "}";
}

/// What stands for the character in an answer.
std::string shownCharacter(const Character& character) {
    switch (character.kind) {
        case Kind::noCharacter:
            return "\xef\xbf\xbd";
        case Kind::harmless:
            return std::string(character.bytes);
        case Kind::backslash:
            return "\\\\";
        case Kind::control:
            // The last byte of U+0080 to U+009F is the code itself.
            return "\\x" + digitsOf(character.bytes.back(), kLowerDigits);
        case Kind::misleading:
            return numbered(character.bytes);
    }
    return {};
}

std::string cutTo(std::size_t bytes, std::string_view text, std::string (*shown)(const Character&)) {
    constexpr std::string_view kMore = "...";
    std::string result;
    std::size_t cutAt = 0;  // where "..." still fits behind whole characters
    while (!text.empty()) {
        result += shown(takeCharacter(text));
        if (result.size() > bytes) return result.substr(0, cutAt).append(kMore.substr(0, bytes));
        if (result.size() + kMore.size() <= bytes) cutAt = result.size();
    }
    return result;
}

}  // namespace

bool misleadsInALine(char32_t character) noexcept {
    return isControl(character) || std::ranges::any_of(kMisleading, [&](const Range& range) {
               return range.first <= character && character <= range.last;
           });
}

std::string shownText(std::string_view text, std::size_t bytes) {
    return cutTo(bytes, text, shownCharacter);
}

std::string shownSentence(std::string_view sentence, std::size_t bytes) {
    return cutTo(bytes, sentence, [](const Character& character) {
        return character.kind == Kind::backslash ? std::string(character.bytes) : shownCharacter(character);
    });
}

std::string escapedForTerminal(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const Character character = takeCharacter(text);
        if (character.kind != Kind::control && character.kind != Kind::noCharacter) {
            shown += shownCharacter(character);
            continue;
        }
        for (const char byte : character.bytes)
            shown += "\\x" + digitsOf(byte, kLowerDigits);
    }
    return shown;
}

std::string debugForm(std::string_view text) {
    constexpr std::string_view kSpecial("\"'\\\t\n\r\0", 7);
    constexpr std::string_view kLetters = "\"'\\tnr0";
    std::string shown = "\"";
    for (const char byte : text) {
        if (const std::size_t at = kSpecial.find(byte); at != std::string_view::npos) {
            shown += {'\\', kLetters[at]};
        } else if (isASCIIControl(byte)) {
            shown += "\\u{" + digitsOf(byte, kUpperDigits) + '}';
        } else {
            shown += byte;
        }
    }
    return shown + '"';
}

std::string hexadecimal(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char byte : bytes)
        text += digitsOf(byte, kLowerDigits);
    return text;
}

}  // namespace kestrav
