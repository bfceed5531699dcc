#include "json/TextOutput.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "base/utf8.h"
#include "json/numberText.h"

namespace kestrav {
namespace {

constexpr std::uint64_t kOnes = 0x0101010101010101U;
constexpr std::uint64_t kHighBits = kOnes * 0x80U;

/// Marks, with the high bit of its byte, the first byte that can't be copied unseen: a control character, a quote, a
/// backslash, or the beginning of anything but ASCII. Bytes above it may be marked wrongly, bytes below never.
constexpr std::uint64_t special(std::uint64_t word) {
    const std::uint64_t quote = word ^ (kOnes * '"');
    const std::uint64_t backslash = word ^ (kOnes * '\\');
    const std::uint64_t low = (word - kOnes * 0x20) | (quote - kOnes) | (backslash - kOnes);
    return ((low & ~word) | word) & kHighBits;
}

constexpr bool isEscaped(unsigned char c) {
    return c < 0x20 || c == '"' || c == '\\';
}

constexpr std::size_t kFirstSize = 512;

}  // namespace

void TextOutput::grow(std::size_t size) {
    const std::size_t used = text_.empty() ? 0 : static_cast<std::size_t>(at_ - text_.data());
    text_.resize(std::max({kFirstSize, text_.size() + text_.size() / 2, used + size}));
    at_ = text_.data() + used;
    end_ = text_.data() + text_.size();
}

std::string TextOutput::take() {
    text_.resize(text_.empty() ? 0 : static_cast<std::size_t>(at_ - text_.data()));
    return std::move(text_);
}

bool TextOutput::putText(const Tree& text) {
    if (TreeNodes::form(text) == TreeNodes::Form::shortText && putShortText(TreeNodes::words(text))) return true;
    return putLongText(TreeNodes::textView(text));
}

/// Writes a short text as it lies in its two words, all of it at once. False when it has to be looked at.
bool TextOutput::putShortText(TreeWords words) {
    constexpr std::size_t kBoth = sizeof words;
    const std::size_t size = words.meta >> 60U;
    // Behind the text there are zeros and the tag: only what is marked below that counts.
    const auto within = [](std::size_t bytes) {
        return bytes >= 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << 8 * bytes) - 1;
    };
    const std::uint64_t first = special(words.payload) & within(size);
    const std::uint64_t second = size <= 8 ? 0 : special(words.meta) & within(size - 8);
    if ((first | second) != 0) return false;
    char* to = room(kBoth + 2);
    *to = '"';
    std::memcpy(to + 1, &words, kBoth);
    to[size + 1] = '"';
    at_ += size + 2;
    return true;
}

bool TextOutput::putLongText(std::string_view text) {
    std::uint64_t word = 0;
    const char* from = text.data();
    const char* const end = from + text.size();
    put('"');
    char* to = room(text.size() + sizeof word);
    const auto copied = [&] { at_ = to; };
    while (from != end) {
        while (end - from >= static_cast<std::ptrdiff_t>(sizeof word)) {
            std::memcpy(&word, from, sizeof word);
            std::memcpy(to, &word, sizeof word);
            const std::uint64_t marks = special(word);
            const auto plain = marks == 0 ? sizeof word : static_cast<std::size_t>(std::countr_zero(marks)) / 8;
            from += plain;
            to += plain;
            if (marks != 0) break;
        }
        if (from == end) break;
        const auto next = static_cast<unsigned char>(*from);
        if (isEscaped(next)) {
            copied();
            putEscaped(*from++);
            to = room(static_cast<std::size_t>(end - from) + sizeof word);
        } else if (next < 0x80) {
            *to++ = *from++;
        } else {
            const std::size_t length = validUTF8SequenceLength({from, static_cast<std::size_t>(end - from)});
            if (length == 0) return false;
            to = std::copy_n(from, length, to);
            from += length;
        }
    }
    copied();
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
    const TreeWords words = TreeNodes::words(leaf);
    switch (TreeNodes::form(leaf)) {
        case TreeNodes::Form::null:
            put("null");
            return true;
        case TreeNodes::Form::boolean:
            put(words.payload != 0 ? "true" : "false");
            return true;
        case TreeNodes::Form::integer:
            at_ = writeNumber(static_cast<std::int64_t>(words.payload), room(kNumberText));
            return true;
        case TreeNodes::Form::unsignedInteger:
            at_ = writeNumber(words.payload, room(kNumberText));
            return true;
        case TreeNodes::Form::floating: {
            const auto value = std::bit_cast<double>(words.payload);
            if (!std::isfinite(value)) return false;
            at_ = writeNumber(value, room(kNumberText));
            return true;
        }
        case TreeNodes::Form::decimal: {
            const Decimal& value = TreeNodes::node<TreeDecimalNode>(leaf)->value;
            put(textOf(value));
            return !value.notANumber;
        }
        case TreeNodes::Form::shortText:
        case TreeNodes::Form::longText:
        case TreeNodes::Form::list:
        case TreeNodes::Form::map:
        case TreeNodes::Form::object:
            return false;
    }
    return false;
}

}  // namespace kestrav
