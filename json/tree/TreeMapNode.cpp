#include "json/tree/TreeMapNode.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <new>
#include <sys/random.h>

#include "base/stopProcess.h"

namespace kestrav {
namespace {

/// The index's slots; each holds a member's position plus one, or 0. At most two of three are taken.
std::size_t slotCount(std::size_t capacity) noexcept {
    return capacity <= TreeMapNode::kUnindexed ? 0 : std::bit_ceil(capacity + capacity / 2);
}

/// Chosen anew in each process, so that nobody can prepare a document whose keys all meet in one slot.
struct Seed {
    std::uint64_t first;
    std::uint64_t second;
};

const Seed& seed() noexcept {
    static const Seed chosen = [] {
        Seed random{};
        if (::getrandom(&random, sizeof random, GRND_NONBLOCK) != static_cast<ssize_t>(sizeof random)) {
            // Early at the start of a computer: better than nothing, and no reason to fail.
            random = {static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count()),
                      reinterpret_cast<std::uintptr_t>(&random)};
        }
        return Seed{random.first, random.second | 1U};
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

std::uint64_t hashOf(const TreeKey& key) noexcept {
    const Seed& chosen = seed();
    if (key.text.size() < 2 * sizeof(std::uint64_t)) {
        return folded(key.words.payload ^ chosen.first, key.words.meta ^ chosen.second);
    }
    return hashOfLong(key.text, chosen.first ^ key.words.meta, chosen.second);
}

/// One bit of 64 for a key: two keys with different bits differ.
std::uint64_t bitOf(const TreeWords& key) noexcept {
    // The address of a long text says nothing about its bytes; its size does.
    const std::uint64_t word = TreeNodes::isShortText(key) ? key.payload ^ key.meta : key.meta;
    return std::uint64_t{1} << (word * 0x9E3779B97F4A7C15U >> 58U);
}

}  // namespace

TreeMapNode* TreeMapNode::make(std::size_t capacity, NodeArena* arena) {
    require(capacity <= kMaxMembers);
    const std::size_t slots = slotCount(capacity);
    const std::size_t bytes = sizeof(TreeMapNode) + capacity * 2 * sizeof(Tree) + slots * sizeof(std::uint32_t);
    const NodeArena::Place place = arena == nullptr ? NodeArena::Place{::operator new(bytes), 0} : arena->take(bytes);
    auto* node = new (place.at) TreeMapNode(place.steps);
    node->capacity = static_cast<std::uint32_t>(capacity);
    for (std::size_t slot = 0; slot < slots; ++slot)
        new (node->index() + slot) std::uint32_t{0};
    return node;
}

TreeMapNode* TreeMapNode::own(Tree& map, std::size_t more) {
    auto* old = TreeNodes::node<TreeMapNode>(map);
    const std::size_t size = old == nullptr ? 0 : old->size;
    const bool alone = old != nullptr && old->isAlone();
    if (alone && old->capacity - size >= more) {
        old->setLent(false);  // whatever was handed out before doesn't hold any more: the map is being changed
        return old;
    }
    Tree fresh = TreeNodes::adopt(TreeNodes::wordsOf(TreeNodes::Form::map, make(grownCapacity(size, more))));
    auto* own = TreeNodes::node<TreeMapNode>(fresh);
    for (std::size_t at = 0; at < size; ++at) {
        if (alone) {
            own->add(std::move(old->key(at)), std::move(old->value(at)));
        } else {
            own->add(Tree(old->key(at)), Tree(old->value(at)));
        }
    }
    map.swap(fresh);
    return own;
}

/// Through the index, or a long key.
Tree* TreeMapNode::findAmongMany(const TreeKey& wanted) noexcept {
    const std::size_t slots = slotCount(capacity);
    if (slots == 0) {
        for (Tree* part = parts(); part != parts() + std::size_t{2} * size; part += 2)
            if (wanted.names(*part)) return part + 1;
        return nullptr;
    }
    for (std::uint64_t slot = hashOf(wanted);; ++slot) {
        const std::uint32_t position = index()[slot & (slots - 1)];
        if (position == 0) return nullptr;
        if (wanted.names(key(position - 1))) return &value(position - 1);
    }
}

/// Puts the key at `position` into the index, if there is one.
void TreeMapNode::enter(std::size_t position) noexcept {
    const std::size_t slots = slotCount(capacity);
    if (slots == 0) return;
    std::uint64_t slot = hashOf(TreeKey::of(key(position)));
    while (index()[slot & (slots - 1)] != 0)
        ++slot;
    index()[slot & (slots - 1)] = static_cast<std::uint32_t>(position + 1);
}

void TreeMapNode::add(Tree name, Tree content) noexcept {
    new (&key(size)) Tree(std::move(name));
    new (&value(size)) Tree(std::move(content));
    enter(size++);
}

/// Adds the members when a quick look tells that no two keys are equal; otherwise nothing.
bool TreeMapNode::addUnlessKnown(std::span<const TreeWords> keysAndValues) noexcept {
    if (capacity > kUnindexed || size > 0) return false;
    std::uint64_t seen = 0;
    for (std::size_t at = 0; at < keysAndValues.size(); at += 2) {
        const std::uint64_t bit = bitOf(keysAndValues[at]);
        if ((seen & bit) != 0) return false;
        seen |= bit;
    }
    Tree* place = parts();
    for (const TreeWords& words : keysAndValues)
        TreeNodes::adoptAt(place++, words);
    size = static_cast<std::uint32_t>(keysAndValues.size() / 2);
    return true;
}

void TreeMapNode::addAll(std::span<const TreeWords> keysAndValues) noexcept {
    if (addUnlessKnown(keysAndValues)) return;
    for (std::size_t at = 0; at + 1 < keysAndValues.size(); at += 2) {
        Tree name = TreeNodes::adopt(keysAndValues[at]);
        Tree content = TreeNodes::adopt(keysAndValues[at + 1]);
        if (Tree* found = find(TreeKey::of(name))) {
            *found = std::move(content);
        } else {
            add(std::move(name), std::move(content));
        }
    }
}

/// Takes the member at `position` out of the index, and counts down the positions behind it.
void TreeMapNode::leave(std::size_t position) noexcept {
    const std::size_t slots = slotCount(capacity);
    if (slots == 0) return;
    const auto home = [this](std::uint32_t entry) { return hashOf(TreeKey::of(key(entry - 1))); };
    const std::uint64_t mask = slots - 1;
    std::uint64_t hole = hashOf(TreeKey::of(key(position))) & mask;
    while (index()[hole] != position + 1)
        hole = (hole + 1) & mask;
    // Whatever a search would not find any more because of the hole moves into it.
    for (std::uint64_t slot = (hole + 1) & mask; index()[slot] != 0; slot = (slot + 1) & mask) {
        if (((slot - home(index()[slot])) & mask) < ((slot - hole) & mask)) continue;
        index()[hole] = index()[slot];
        hole = slot;
    }
    index()[hole] = 0;
    for (std::uint32_t& entry : std::span(index(), slots))
        entry -= entry > position ? 1U : 0U;
}

void TreeMapNode::remove(std::size_t position) noexcept {
    leave(position);
    std::move(parts() + 2 * position + 2, parts() + std::size_t{2} * size, parts() + 2 * position);
    --size;
    key(size).~Tree();
    value(size).~Tree();
}

}  // namespace kestrav
