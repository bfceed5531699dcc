#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

#include "json/tree/TreeKey.h"
#include "json/tree/TreeListNode.h"

namespace kestrav {

/// The node of a map; its keys and values follow it by turns, in the order of their arrival, and behind those the index
/// of a large map.
struct TreeMapNode : TreeContainerNode {
    using TreeContainerNode::TreeContainerNode;

    static constexpr std::size_t kMaxMembers = std::numeric_limits<std::uint32_t>::max() / 4;
    /// Up to this capacity the keys are compared one by one; above, an index leads to them.
    static constexpr std::size_t kUnindexed = 16;

    static TreeMapNode* make(std::size_t capacity, NodeArena* arena = nullptr);
    /// As TreeListNode::own().
    static TreeMapNode* own(Tree& map, std::size_t more);

    Tree* parts() noexcept { return reinterpret_cast<Tree*>(this + 1); }
    Tree& key(std::size_t position) noexcept { return parts()[2 * position]; }
    Tree& value(std::size_t position) noexcept { return parts()[2 * position + 1]; }

    /// The value under a key; a null pointer when there is none. Here to be drawn into lookups: a short key among few
    /// takes a handful of comparisons.
    Tree* find(const TreeKey& wanted) noexcept {
        if (capacity > kUnindexed || !TreeNodes::isShortText(wanted.words)) return findAmongMany(wanted);
        for (Tree* part = parts(); part != parts() + std::size_t{2} * size; part += 2) {
            const TreeWords words = TreeNodes::words(*part);
            if (words.meta == wanted.words.meta && words.payload == wanted.words.payload) return part + 1;
        }
        return nullptr;
    }
    /// Adds a member whose key isn't there yet; there must be room.
    void add(Tree key, Tree value) noexcept;
    /// Takes over keys and values by turns; there must be room. Of equal keys the last one's value stays, in the place
    /// of the first.
    void addAll(std::span<const TreeWords> keysAndValues) noexcept;
    void remove(std::size_t position) noexcept;

  private:
    Tree* findAmongMany(const TreeKey& wanted) noexcept;
    /// Slots that each hold a member's position plus one, or 0.
    std::uint32_t* index() noexcept { return reinterpret_cast<std::uint32_t*>(parts() + std::size_t{2} * capacity); }
    void enter(std::size_t position) noexcept;
    void leave(std::size_t position) noexcept;
    bool addUnlessKnown(std::span<const TreeWords> keysAndValues) noexcept;
};

}  // namespace kestrav
