#include "json/tree/TextOutput.h"

#include "json/tree/TreeDecimalNode.h"
#include "json/tree/scanText.h"

namespace kestrav {

void TextOutput::makeRoom(std::size_t size) {
    pieces_.emplace_back(begin_, static_cast<std::size_t>(at_ - begin_));
    rooms_.push_back(std::make_unique_for_overwrite<char[]>(size));
    begin_ = at_ = rooms_.back().get();
    end_ = begin_ + size;
}

void TextOutput::putLarge(std::string_view text) {
    makeRoom(std::max(text.size(), kMostRoom));
    std::memcpy(at_, text.data(), text.size());
    at_ += text.size();
}

std::string TextOutput::take() {
    pieces_.emplace_back(begin_, static_cast<std::size_t>(at_ - begin_));
    std::size_t size = 0;
    for (const std::string_view piece : pieces_)
        size += piece.size();
    std::string text;
    text.reserve(size);
    for (const std::string_view piece : pieces_)
        text.append(piece);
    return text;
}

bool TextOutput::putLongText(std::string_view text) {
    const char* at = text.data();
    const char* const end = at + text.size();
    put('"');
    while (at != end) {
        const char* const stop = scanText(at, end);
        put({at, static_cast<std::size_t>(stop - at)});
        if (stop == end) break;
        if (static_cast<unsigned char>(*stop) >= 0x80) return false;
        putEscaped(*stop);
        at = stop + 1;
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

bool TextOutput::putRareLeaf(const Tree& leaf) {
    const TreeWords words = TreeNodes::words(leaf);
    switch (TreeNodes::form(leaf)) {
        case TreeNodes::Form::null:
            put("null");
            return true;
        case TreeNodes::Form::boolean:
            put(words.payload != 0 ? "true" : "false");
            return true;
        case TreeNodes::Form::unsignedInteger:
            at_ = writeNumber(words.payload, room(kNumberText));
            return true;
        case TreeNodes::Form::decimal: {
            const Decimal& value = TreeNodes::node<TreeDecimalNode>(leaf)->value;
            put(textOf(value));
            return !value.notANumber;
        }
        case TreeNodes::Form::integer:
        case TreeNodes::Form::floating:
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
