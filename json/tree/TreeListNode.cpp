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
    if (old != nullptr && old->isAlone()) {
        old->setLent(false);  // whatever was handed out before doesn't hold any more: the list is being changed
        old->settle();
        if (old->capacity - size >= more) return old;
    }
    Tree fresh = TreeNodes::adopt(TreeNodes::wordsOf(TreeNodes::Form::list, make(grownCapacity(size, more))));
    auto* own = TreeNodes::node<TreeListNode>(fresh);
    if (old != nullptr) fill(own, old);
    list.swap(fresh);
    return own;
}

TreeListNode* TreeListNode::makeBased(TreeListNode* base) {
    const std::size_t words = wordsOfBits(base->size);
    const std::size_t bytes =
        sizeof(TreeListNode) + base->size * sizeof(Tree) + sizeof(void*) + words * sizeof(std::uint64_t);
    auto* node = new (::operator new(bytes)) TreeListNode();
    node->size = node->capacity = base->size;
    for (std::size_t at = 0; at < base->size; ++at)
        TreeNodes::adoptAt(node->elements() + at, TreeNodes::words(base->elements()[at]));
    new (node->baseSlot()) TreeListNode*(base);
    for (std::size_t word = 0; word < words; ++word)
        new (node->bits() + word) std::uint64_t{0};
    base->retain();
    node->setBased(true);
    return node;
}

/// Counts the reference to one element, which may then be changed.
Tree* TreeListNode::countOne(std::size_t index) {
    std::uint64_t& word = bits()[index / kBitsOfWord];
    const std::uint64_t bit = std::uint64_t{1} << index % kBitsOfWord;
    if ((word & bit) == 0) {
        copyTo(elements() + index, base()->elements()[index]);
        word |= bit;
    }
    return elements() + index;
}

/// Takes over the references of the list that this one alone rests on, and lets it go.
void TreeListNode::takeFromBase() noexcept {
    for (std::size_t at = 0; at < size; ++at) {
        const bool isCounted = (bits()[at / kBitsOfWord] >> at % kBitsOfWord & 1U) != 0;
        if (!isCounted) static_cast<void>(TreeNodes::give(std::move(base()->elements()[at])));
    }
}

void TreeListNode::settle() {
    if (!isBased()) return;
    if (base()->isAlone()) {
        takeFromBase();
    } else {
        for (std::size_t at = 0; at < size; ++at)
            countOne(at);
    }
    setBased(false);
    static_cast<void>(TreeNodes::adopt(TreeNodes::wordsOf(TreeNodes::Form::list, base())));
}

Tree* TreeListNode::ownElement(Tree& list, std::size_t index) {
    auto* old = TreeNodes::node<TreeListNode>(list);
    if (!old->isAlone() && !old->isBased() && old->size >= kFewestBased) {
        Tree fresh = TreeNodes::adopt(TreeNodes::wordsOf(TreeNodes::Form::list, makeBased(old)));
        Tree* const element = TreeNodes::node<TreeListNode>(fresh)->countOne(index);
        list.swap(fresh);
        return element;
    }
    if (!old->isAlone() || !old->isBased() || old->base()->isAlone()) return own(list, 0)->elements() + index;
    old->setLent(false);
    return old->countOne(index);
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
