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
///
/// A long list that others share, of which one element is to be changed, is not copied reference by reference, which
/// would touch every node below and touch it again at the end. The copy rests on the list it was made from: it holds
/// that one, and its elements are the same words, of which no reference is counted but of those that have been changed
/// since. It stands on its own again ("settles") before elements are added or taken away, or when nobody else holds
/// what it rests on. What it rests on never rests on a third one.
struct TreeListNode : TreeContainerNode {
    using TreeContainerNode::TreeContainerNode;

    static constexpr std::size_t kMaxElements = std::numeric_limits<std::uint32_t>::max();

    static TreeListNode* make(std::size_t capacity, NodeArena* arena = nullptr);
    /// A node that belongs to `list` alone, with room for so many more; changes `list` to hold it. When there is no
    /// memory, `list` stays as it was.
    static TreeListNode* own(Tree& list, std::size_t more);
    /// The element at `index`, which must be there, in a node that belongs to `list` alone, to be changed where it
    /// stands. When there is no memory, `list` stays as it was.
    static Tree* ownElement(Tree& list, std::size_t index);

    Tree* elements() noexcept { return reinterpret_cast<Tree*>(this + 1); }
    void insert(std::size_t position, Tree value) noexcept;  ///< there must be room
    void remove(std::size_t position) noexcept;

    /// Of a list that rests on another one: that list, and one bit for each element, set where a reference is counted.
    TreeListNode* base() noexcept { return *baseSlot(); }
    std::span<const std::uint64_t> counted() noexcept { return {bits(), wordsOfBits(size)}; }

  private:
    static constexpr std::size_t kBitsOfWord = 64;
    /// Shorter lists are copied as soon.
    static constexpr std::size_t kFewestBased = 128;

    static std::size_t wordsOfBits(std::size_t elements) noexcept { return (elements + kBitsOfWord - 1) / kBitsOfWord; }
    /// Behind the elements; there is no room for more of them, and what waits for its release has no capacity any more.
    TreeListNode** baseSlot() noexcept { return reinterpret_cast<TreeListNode**>(elements() + size); }
    std::uint64_t* bits() noexcept { return reinterpret_cast<std::uint64_t*>(baseSlot() + 1); }

    static TreeListNode* makeBased(TreeListNode* base);
    Tree* countOne(std::size_t index);
    void settle();
    void takeFromBase() noexcept;
};

/// How much room a container of `size` gets that is to grow by `more`: twice as much when it has to grow, so that
/// adding one by one stays linear.
std::size_t grownCapacity(std::size_t size, std::size_t more) noexcept;

}  // namespace kestrav
