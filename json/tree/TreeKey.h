#pragma once

#include <string_view>

#include "json/tree/TreeNodes.h"

namespace kestrav {

/// A text to look up, without a node of its own.
struct TreeKey {
    std::string_view text;
    TreeWords words;  ///< those of a short text; of a long one only `meta`

    static TreeKey of(std::string_view text) noexcept {
        if (text.size() <= TreeNodes::kShortText) return {text, TreeNodes::shortText(text)};
        return {text, TreeNodes::longTextWords(text.size())};
    }
    static TreeKey of(const Tree& text) noexcept { return {TreeNodes::textView(text), TreeNodes::words(text)}; }

    bool names(const Tree& key) const noexcept {
        const TreeWords other = TreeNodes::words(key);
        // The second words agree in form and size, and in the end of a short text.
        if (other.meta != words.meta) return false;
        if (other.payload == words.payload) return true;
        return TreeNodes::form(key) == TreeNodes::Form::longText && TreeNodes::textView(key) == text;
    }
};

}  // namespace kestrav
