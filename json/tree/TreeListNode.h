#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

#include "json/tree/NodeArena.h"
#include "json/tree/Tree.h"
#include "json/tree/TreeNode.h"

namespace kestrav {

/// What the nodes of lists and maps begin with. Most are small and many, so the counts are no wider than they need to
/// be.
struct TreeContainerNode : TreeNode {
    using TreeNode::TreeNode;
    std::uint32_t size = 0;
    std::uint32_t capacity = 0;

    /// For a node that no tree holds any more: a word that it keeps until it is freed, half of it where the references
    /// were counted and half where the capacity stood.
    void setNext(std::uintptr_t next) noexcept {
        setLeftOver(static_cast<std::uint32_t>(next >> 32U));
        capacity = static_cast<std::uint32_t>(next);
    }
    std::uintptr_t next() const noexcept { return std::uintptr_t{leftOver()} << 32U | capacity; }
};

static_assert(sizeof(TreeContainerNode) == 16);

/// The node of a list; its elements follow it.
struct TreeListNode : TreeContainerNode {
    using TreeContainerNode::TreeContainerNode;

    static constexpr std::size_t kMaxElements = std::numeric_limits<std::uint32_t>::max();

    static TreeListNode* make(std::size_t capacity, NodeArena* arena = nullptr);
    /// A node that belongs to `list` alone, with room for so many more; changes `list` to hold it. When there is no
    /// memory, `list` stays as it was.
    static TreeListNode* own(Tree& list, std::size_t more);

    Tree* elements() noexcept { return reinterpret_cast<Tree*>(this + 1); }
    void insert(std::size_t position, Tree value) noexcept;  ///< there must be room
    void remove(std::size_t position) noexcept;
};

/// How much room a container of `size` gets that is to grow by `more`: twice as much when it has to grow, so that
/// adding one by one stays linear.
std::size_t grownCapacity(std::size_t size, std::size_t more) noexcept;

}  // namespace kestrav
