#include <algorithm>
#include <bit>
#include <random>

#include "base/stopProcess.h"
#include "json/TreeNodes.h"

namespace kestrav {
namespace {

constexpr std::size_t kUnindexed = TreeNodes::kUnindexed;

/// The index's slots; each holds a member's position plus one, or 0. At most two of three are taken.
std::size_t slotCount(std::size_t capacity) noexcept {
    return capacity <= kUnindexed ? 0 : std::bit_ceil(capacity + capacity / 2);
}

TreeMapNode* newMap(std::size_t capacity) {
    require(capacity <= TreeNodes::kMaxMembers);
    const std::size_t slots = slotCount(capacity);
    const std::size_t bytes = sizeof(TreeMapNode) + capacity * 2 * sizeof(Tree) + slots * sizeof(std::uint32_t);
    auto* node = new (::operator new(bytes)) TreeMapNode;
    node->capacity = capacity;
    for (std::size_t slot = 0; slot < slots; ++slot)
        new (node->index() + slot) std::uint32_t{0};
    return node;
}

/// Chosen anew in each process, so that nobody can prepare a document whose keys all meet in one slot.
struct Seed {
    std::uint64_t first;
    std::uint64_t second;
};

const Seed& seed() {
    static const Seed chosen = [] {
        std::random_device device;
        const auto word = [&device] { return std::uint64_t{device()} << 32U | device(); };
        return Seed{word(), word() | 1U};
    }();
    return chosen;
}

std::uint64_t folded(std::uint64_t left, std::uint64_t right) noexcept {
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(left) * right;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64U);
}

std::uint64_t hashOfLong(std::string_view text, std::uint64_t state, std::uint64_t second) noexcept {
    std::uint64_t words[2];
    const char* at = text.data();
    const char* last = at + text.size() - sizeof words;
    for (; at < last; at += sizeof words) {
        std::memcpy(words, at, sizeof words);
        state = folded(words[0] ^ state, words[1] ^ second);
    }
    std::memcpy(words, last, sizeof words);  // overlaps what was read; a long text has 16 bytes at least
    return folded(words[0] ^ state, words[1] ^ second);
}

std::uint64_t hashOf(const TreeKey& key) {
    const Seed& chosen = seed();
    if (key.text.size() < 2 * sizeof(std::uint64_t)) {
        return folded(key.words.payload ^ chosen.first, key.words.meta ^ chosen.second);
    }
    return hashOfLong(key.text, chosen.first ^ key.words.meta, chosen.second);
}

Tree* findIndexed(TreeMapNode* map, std::size_t slots, const TreeKey& key) {
    const std::uint32_t* index = map->index();
    for (std::uint64_t slot = hashOf(key);; ++slot) {
        const std::uint32_t position = index[slot & (slots - 1)];
        if (position == 0) return nullptr;
        if (key.names(map->key(position - 1))) return &map->value(position - 1);
    }
}

/// One bit of 64 for a key: two keys with different bits differ.
std::uint64_t bitOf(const Tree& key) noexcept {
    const TreeWords words = TreeNodes::words(key);
    // The address of a long text says nothing about its bytes; its size does.
    const bool isShort = TreeNodes::form(key) == TreeNodes::Form::shortText;
    const std::uint64_t mixed = (isShort ? words.payload ^ words.meta : words.meta) * 0x9E3779B97F4A7C15U;
    return std::uint64_t{1} << (mixed >> 58U);
}

/// Adds members of which few or none are equal. `seen` holds the bits of the keys so far.
void addOrReplace(TreeMapNode* map, Tree key, Tree value, std::uint64_t& seen) {
    const std::uint64_t bit = bitOf(key);
    const bool mayBeThere = map->capacity > kUnindexed || (seen & bit) != 0;
    seen |= bit;
    if (Tree* found = mayBeThere ? TreeNodes::find(map, key) : nullptr) {
        *found = std::move(value);
    } else {
        TreeNodes::add(map, std::move(key), std::move(value));
    }
}

}  // namespace

Tree* TreeNodes::find(TreeMapNode* map, const TreeKey& key) noexcept {
    if (const std::size_t slots = slotCount(map->capacity)) return findIndexed(map, slots, key);
    for (std::size_t position = 0; position < map->size; ++position) {
        if (key.names(map->key(position))) return &map->value(position);
    }
    return nullptr;
}

Tree* TreeNodes::findByKey(TreeMapNode* map, const Tree& text) noexcept {
    return find(map, key(text));
}

void TreeNodes::add(TreeMapNode* map, Tree key, Tree value) noexcept {
    if (const std::size_t slots = slotCount(map->capacity)) {
        std::uint64_t slot = hashOf(TreeNodes::key(key));
        while (map->index()[slot & (slots - 1)] != 0)
            ++slot;
        map->index()[slot & (slots - 1)] = static_cast<std::uint32_t>(map->size + 1);
    }
    new (&map->key(map->size)) Tree(std::move(key));
    new (&map->value(map->size)) Tree(std::move(value));
    ++map->size;
}

TreeWords TreeNodes::map(std::span<const TreeWords> keysAndValues) {
    if (keysAndValues.empty()) return {0, Tree::metaOf(Form::map)};
    TreeMapNode* node = newMap(keysAndValues.size() / 2);
    std::uint64_t seen = 0;
    for (std::size_t at = 0; at + 1 < keysAndValues.size(); at += 2) {
        addOrReplace(node, adopt(keysAndValues[at]), adopt(keysAndValues[at + 1]), seen);
    }
    return wordsOf(Form::map, node);
}

TreeMapNode* TreeNodes::ownMap(Tree& tree, std::size_t more) {
    auto* old = node<TreeMapNode>(tree);
    const std::size_t size = old == nullptr ? 0 : old->size;
    const bool alone = old != nullptr && old->references.load(std::memory_order_acquire) == 1;
    if (alone && old->capacity - size >= more) return old;
    TreeMapNode* own = newMap(more == 0 ? size : std::max({size + more, size * 2, std::size_t{4}}));
    for (std::size_t at = 0; at < size; ++at) {
        Tree& key = old->key(at);
        Tree& value = old->value(at);
        add(own, alone ? std::move(key) : key, alone ? std::move(value) : value);
    }
    tree = adopt(wordsOf(Form::map, own));
    return own;
}

}  // namespace kestrav
