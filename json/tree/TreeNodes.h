#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <new>
#include <span>
#include <string_view>
#include <utility>

#include "json/tree/Tree.h"

namespace kestrav {

class NodeArena;

/// The two words of a Tree without its ownership, for building and comparing.
struct TreeWords {
    std::uint64_t payload = 0;
    std::uint64_t meta = 0;
};

/// The inside of Tree for the other files of this folder and for lookups: how the two words are used.
class TreeNodes {
  public:
    using Form = Tree::Form;

    /// Hands the words' reference over to a Tree, or takes it from one.
    static Tree adopt(TreeWords words) noexcept { return Tree(words.payload, words.meta); }
    static void adoptAt(void* place, TreeWords words) noexcept { new (place) Tree(words.payload, words.meta); }
    static TreeWords give(Tree&& tree) noexcept {
        return {std::exchange(tree.payload_, 0), std::exchange(tree.meta_, 0)};
    }
    static TreeWords words(const Tree& tree) noexcept { return {tree.payload_, tree.meta_}; }
    static Form form(const Tree& tree) noexcept { return tree.form(); }
    static bool isInteger(const Tree& tree) noexcept { return tree.is(Form::integer); }
    static bool isShortText(const TreeWords& words) noexcept {
        return (words.meta >> Tree::kTagShift & 15U) == static_cast<std::uint64_t>(Form::shortText);
    }

    /// The words of a text; a long one gets a node of its own.
    static TreeWords text(std::string_view text, NodeArena* arena = nullptr);
    static TreeWords shortText(std::string_view text) noexcept;
    /// The meta word of a short text whose bytes have still to be added to it.
    static constexpr std::uint64_t shortTextMeta(std::size_t size) noexcept {
        return Tree::metaOf(Form::shortText) | std::uint64_t{size} << Tree::kSizeShift;
    }
    static constexpr std::size_t kShortText = Tree::kShortText;
    /// Those of a long text but for its address.
    static constexpr TreeWords longTextWords(std::size_t size) noexcept {
        return {0, Tree::metaOf(Form::longText) | std::uint64_t{size}};
    }
    static std::string_view textView(const Tree& tree) noexcept;

    /// The words of a number.
    static TreeWords integer(std::int64_t value) noexcept {
        return {static_cast<std::uint64_t>(value), Tree::metaOf(Form::integer)};
    }
    static TreeWords unsignedInteger(std::uint64_t value) noexcept {
        return {value, Tree::metaOf(Form::unsignedInteger)};
    }
    static TreeWords floating(double value) noexcept {
        return {std::bit_cast<std::uint64_t>(value), Tree::metaOf(Form::floating)};
    }

    /// A list of the given elements, a map of the given keys and values by turns; they take the words over. Of equal
    /// keys the last one's value stays, in the place of the first.
    static TreeWords list(std::span<const TreeWords> elements, NodeArena* arena = nullptr);
    static TreeWords map(std::span<const TreeWords> keysAndValues, NodeArena* arena = nullptr);

    /// The nodes; null pointers when empty.
    template <class Node>
    static Node* node(const Tree& tree) noexcept {
        return tree.address<Node>();
    }
    template <class Node>
    static TreeWords wordsOf(Form form, Node* node) noexcept {
        return {std::bit_cast<std::uint64_t>(node), Tree::metaOf(form)};
    }

    /// Has the processor fetch the node of a tree that will be touched soon. Whoever goes through a long list tells so
    /// early of the elements to come: their nodes are anywhere in memory, and waiting for each is most of the cost.
    static constexpr std::size_t kEarly = 16;
    static void expect(const Tree& tree) noexcept {
        if (tree.hasNode()) __builtin_prefetch(tree.address<const char>(), 1);
    }

    /// The element or member, in a node that belongs to `tree` alone at this moment; a null pointer when there is none.
    /// Unlike what Tree::mutableElement() gives, a later copy of `tree` may share it again.
    static Tree* ownElement(Tree& tree, std::size_t index);
    static Tree* ownMember(Tree& tree, std::string_view key);

  private:
    template <class Word>
    static std::uint64_t load(const char* from) noexcept;
};

template <class Word>
std::uint64_t TreeNodes::load(const char* from) noexcept {
    Word word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

inline TreeWords TreeNodes::shortText(std::string_view text) noexcept {
    const char* from = text.data();
    const std::size_t size = text.size();
    TreeWords words{0, shortTextMeta(size)};
    // Overlapping loads instead of a copy whose length isn't known: this is where most keys and texts pass.
    if (size > 8) {
        words.payload = load<std::uint64_t>(from);
        words.meta |= load<std::uint64_t>(from + size - 8) >> (8 * (16 - size));
    } else if (size >= 4) {
        words.payload = load<std::uint32_t>(from) | load<std::uint32_t>(from + size - 4) << (8 * (size - 4));
    } else if (size > 0) {
        words.payload = load<std::uint8_t>(from) | load<std::uint8_t>(from + size / 2) << (8 * (size / 2)) |
                        load<std::uint8_t>(from + size - 1) << (8 * (size - 1));
    }
    return words;
}

inline std::string_view TreeNodes::textView(const Tree& tree) noexcept {
    return tree.text().value_or(std::string_view());
}

}  // namespace kestrav
