#include "json/tree/TreeListNode.h"

#include <algorithm>
#include <new>

#include "base/stopProcess.h"
#include "json/tree/TreeNodes.h"

namespace kestrav {
namespace {

/// A copy of an element, as the constructor makes it, but where the compiler can draw it into the loop.
void copyTo(void* place, const Tree& element) {
    TreeNode* const node =
        TreeNodes::form(element) < TreeNodes::Form::decimal ? nullptr : TreeNodes::node<TreeNode>(element);
    if (node != nullptr && node->isLent()) {
        new (place) Tree(element);
        return;
    }
    if (node != nullptr) node->retain();
    TreeNodes::adoptAt(place, TreeNodes::words(element));
}

/// Moves the elements when nobody else holds `from`, else copies them.
void fill(TreeListNode* to, TreeListNode* from) {
    const bool alone = from->isAlone();
    for (; to->size < from->size; ++to->size) {
        Tree& element = from->elements()[to->size];
        if (alone) {
            new (to->elements() + to->size) Tree(std::move(element));
            continue;
        }
        if (to->size + TreeNodes::kEarly < from->size) TreeNodes::expect((&element)[TreeNodes::kEarly]);
        copyTo(to->elements() + to->size, element);
    }
}

}  // namespace

std::size_t grownCapacity(std::size_t size, std::size_t more) noexcept {
    constexpr std::size_t kFewest = 4;
    return more == 0 ? size : std::max({size + more, size * 2, kFewest});
}

TreeListNode* TreeListNode::make(std::size_t capacity, NodeArena* arena) {
    require(capacity <= kMaxElements);
    const std::size_t bytes = sizeof(TreeListNode) + capacity * sizeof(Tree);
    const NodeArena::Place place = arena == nullptr ? NodeArena::Place{::operator new(bytes), 0} : arena->take(bytes);
    auto* node = new (place.at) TreeListNode(place.steps);
    node->capacity = static_cast<std::uint32_t>(capacity);
    return node;
}

TreeListNode* TreeListNode::own(Tree& list, std::size_t more) {
    auto* old = TreeNodes::node<TreeListNode>(list);
    const std::size_t size = old == nullptr ? 0 : old->size;
    if (old != nullptr && old->isAlone() && old->capacity - size >= more) {
        old->setLent(false);  // whatever was handed out before doesn't hold any more: the list is being changed
        return old;
    }
    Tree fresh = TreeNodes::adopt(TreeNodes::wordsOf(TreeNodes::Form::list, make(grownCapacity(size, more))));
    auto* own = TreeNodes::node<TreeListNode>(fresh);
    if (old != nullptr) fill(own, old);
    list.swap(fresh);
    return own;
}

void TreeListNode::insert(std::size_t position, Tree value) noexcept {
    Tree* const at = elements() + position;
    new (elements() + size) Tree();
    ++size;
    std::move_backward(at, elements() + size - 1, elements() + size);
    *at = std::move(value);
}

void TreeListNode::remove(std::size_t position) noexcept {
    Tree* const at = elements() + position;
    std::move(at + 1, elements() + size, at);
    elements()[--size].~Tree();
}

}  // namespace kestrav
