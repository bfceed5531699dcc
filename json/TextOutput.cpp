#include "json/TextOutput.h"

#include <charconv>
#include <cstdint>
#include <cstring>

#include "base/utf8.h"
#include "json/numberText.h"

namespace kestrav {
namespace {

constexpr std::uint64_t kOnes = 0x0101010101010101U;
constexpr std::uint64_t kHighBits = kOnes * 0x80U;

/// The high bit of each byte that is less than `limit`, right for bytes below 0x80 when no lower byte is marked.
constexpr std::uint64_t below(std::uint64_t word, std::uint64_t limit) {
    return (word - kOnes * limit) & ~word & kHighBits;
}

constexpr bool isPlain(char c) {
    return static_cast<unsigned char>(c) >= 0x20 && c != '"' && c != '\\';
}

/// How many bytes from `at` on are written as they are. Only judges whole words of plain ASCII, then single bytes.
std::size_t plainRun(std::string_view text, std::size_t at) {
    const std::size_t start = at;
    std::uint64_t word = 0;
    for (; text.size() - at >= sizeof word; at += sizeof word) {
        std::memcpy(&word, text.data() + at, sizeof word);
        const std::uint64_t special =
            below(word, 0x20) | below(word ^ kOnes * '"', 1) | below(word ^ kOnes * '\\', 1) | (word & kHighBits);
        if (special != 0) break;
    }
    while (at < text.size() && isPlain(text[at]))
        ++at;
    return at - start;
}

}  // namespace

void TextOutput::put(std::string_view text) {
    if (text.size() > buffer_.size() - used_) {
        flush();
        if (text.size() > buffer_.size()) {
            text_.append(text);
            return;
        }
    }
    std::memcpy(buffer_.data() + used_, text.data(), text.size());
    used_ += text.size();
}

bool TextOutput::putText(std::string_view text) {
    if (!isValidUTF8(text)) return false;
    put('"');
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t run = plainRun(text, at);
        put(text.substr(at, run));
        at += run;
        if (at < text.size() && !isPlain(text[at])) putEscaped(text[at++]);
    }
    put('"');
    return true;
}

void TextOutput::putEscaped(char c) {
    constexpr std::string_view kHex = "0123456789abcdef";
    switch (c) {
        case '"':
            return put("\\\"");
        case '\\':
            return put("\\\\");
        case '\b':
            return put("\\b");
        case '\f':
            return put("\\f");
        case '\n':
            return put("\\n");
        case '\r':
            return put("\\r");
        case '\t':
            return put("\\t");
        default:
            put("\\u00");
            put(kHex[static_cast<unsigned char>(c) >> 4U]);
            put(kHex[static_cast<unsigned char>(c) & 15U]);
    }
}

bool TextOutput::putLeaf(const Tree& leaf) {
    switch (leaf.kind()) {
        case Tree::Kind::null:
            put("null");
            return true;
        case Tree::Kind::boolean:
            put(*leaf.boolean() ? "true" : "false");
            return true;
        case Tree::Kind::number:
            return putNumber(leaf);
        case Tree::Kind::text:
            return putText(*leaf.text());
        case Tree::Kind::list:
        case Tree::Kind::map:
        case Tree::Kind::object:
            return false;
    }
    return false;
}

bool TextOutput::putNumber(const Tree& leaf) {
    const Number number = *leaf.number();
    if (!number.isFinite()) return false;
    if (number.kind() == Number::Kind::decimal) {
        put(textOf(number.decimal()));
        return true;
    }
    char* const to = room(kNumberText);
    used_ += static_cast<std::size_t>(writeNumber(number, to) - to);
    return true;
}

}  // namespace kestrav
