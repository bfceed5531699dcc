#pragma once

#include <atomic>
#include <cstring>
#include <limits>
#include <new>
#include <span>

#include "json/Tree.h"

namespace kestrav {

/// What all nodes of a tree begin with. A node is released by the thread that lets its last reference go; from then
/// on the word is free to link nodes that wait for it, so that no depth of nesting needs any stack.
struct TreeNode {
    std::atomic<std::uintptr_t> references{1};
};

struct TreeTextNode : TreeNode {  // its bytes follow it
    char* bytes() noexcept { return reinterpret_cast<char*>(this + 1); }
};
static_assert(sizeof(TreeTextNode) == sizeof(std::uintptr_t));
struct TreeDecimalNode : TreeNode {
    Decimal value;
};
struct TreeObjectNode : TreeNode {
    std::shared_ptr<const TreeObject> value;
};
struct TreeListNode : TreeNode {  // its elements follow it
    std::size_t size = 0;
    std::size_t capacity = 0;
    Tree* elements() noexcept { return reinterpret_cast<Tree*>(this + 1); }
};
struct TreeMapNode : TreeNode {  // its keys and values follow it by turns, and those the index of a large map
    std::size_t size = 0;
    std::size_t capacity = 0;
    Tree* parts() noexcept { return reinterpret_cast<Tree*>(this + 1); }
    Tree& key(std::size_t position) noexcept { return parts()[2 * position]; }
    Tree& value(std::size_t position) noexcept { return parts()[2 * position + 1]; }
    std::uint32_t* index() noexcept { return reinterpret_cast<std::uint32_t*>(parts() + 2 * capacity); }
};

/// The two words of a Tree without its ownership, for building and comparing.
struct TreeWords {
    std::uint64_t payload = 0;
    std::uint64_t meta = 0;
};

/// A text to look up, without a node of its own.
struct TreeKey {
    std::string_view text;
    TreeWords words;  ///< those of a short text; of a long one only `meta`

    bool names(const Tree& key) const noexcept;
};

/// The inside of Tree: how the nodes are laid out, made, found in and released.
class TreeNodes {
  public:
    using Form = Tree::Form;
    static constexpr std::size_t kMaxMembers = std::numeric_limits<std::uint32_t>::max() / 4;

    /// Hands the words' reference over to a Tree, or takes it from one.
    static Tree adopt(TreeWords words) noexcept { return Tree(words.payload, words.meta); }
    static TreeWords give(Tree&& tree) noexcept {
        return {std::exchange(tree.payload_, 0), std::exchange(tree.meta_, 0)};
    }
    static TreeWords words(const Tree& tree) noexcept { return {tree.payload_, tree.meta_}; }
    static Form form(const Tree& tree) noexcept { return tree.form(); }
    static bool isInteger(const Tree& tree) noexcept { return tree.is(Form::integer); }

    /// The words of a text; a long one gets a node of its own. `first` and `second` are put together.
    static TreeWords text(std::string_view first, std::string_view second = {});
    static TreeWords shortText(std::string_view text) noexcept;
    static std::string_view textView(const Tree& tree) noexcept;
    static TreeKey key(std::string_view text) noexcept;
    static TreeKey key(const Tree& text) noexcept { return {textView(text), words(text)}; }

    /// A list of the given elements, a map of the given keys and values by turns; they take the words over. Of equal
    /// keys the last one's value stays, in the place of the first.
    static TreeWords list(std::span<const TreeWords> elements);
    static TreeWords map(std::span<const TreeWords> keysAndValues);

    /// The nodes; null pointers when empty.
    template <class Node>
    static Node* node(const Tree& tree) noexcept {
        return tree.address<Node>();
    }
    template <class Node>
    static TreeWords wordsOf(Form form, Node* node) noexcept {
        return {std::bit_cast<std::uint64_t>(node), Tree::metaOf(form)};
    }

    /// A node that belongs to `tree` alone, with room for one more; changes `tree` to hold it.
    static TreeListNode* ownList(Tree& tree, std::size_t more);
    static TreeMapNode* ownMap(Tree& tree, std::size_t more);

    /// Up to this capacity the keys of a map are compared one by one; above, an index leads to them.
    static constexpr std::size_t kUnindexed = 16;

    /// The value under `key`; a null pointer when there is none.
    static Tree* find(TreeMapNode* map, const TreeKey& key) noexcept;
    /// The same for a text that is a Tree. Here to be drawn into lookups: a short key among few takes a handful of
    /// comparisons.
    static Tree* find(TreeMapNode* map, const Tree& text) noexcept {
        if (map->capacity > kUnindexed || text.form() != Form::shortText) return findByKey(map, text);
        const TreeWords wanted = words(text);
        for (Tree* part = map->parts(); part != map->parts() + 2 * map->size; part += 2) {
            if (part->meta_ == wanted.meta && part->payload_ == wanted.payload) return part + 1;
        }
        return nullptr;
    }
    /// Adds a member whose key isn't there yet; there must be room.
    static void add(TreeMapNode* map, Tree key, Tree value) noexcept;

    /// Whether the last reference was let go.
    static bool letGo(TreeNode* node) noexcept;
    static void release(Tree::Form form, TreeNode* node) noexcept;

  private:
    [[gnu::noinline]] static Tree* findByKey(TreeMapNode* map, const Tree& text) noexcept;
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
    TreeWords words{0, Tree::metaOf(Form::shortText) | std::uint64_t{size} << (Tree::kTagShift + 4)};
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

inline TreeKey TreeNodes::key(std::string_view text) noexcept {
    if (text.size() <= Tree::kShortText) return {text, shortText(text)};
    return {text, {0, Tree::metaOf(Form::longText) | text.size()}};
}

inline bool TreeKey::names(const Tree& key) const noexcept {
    const TreeWords other = TreeNodes::words(key);
    // The second words agree in form and size, and in the end of a short text.
    if (other.meta != words.meta) return false;
    if (other.payload == words.payload) return true;
    return TreeNodes::form(key) == TreeNodes::Form::longText && TreeNodes::textView(key) == text;
}

}  // namespace kestrav
