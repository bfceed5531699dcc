#include "json/TreeNodes.h"

#include <algorithm>

#include "base/stopProcess.h"

namespace kestrav {
namespace {

TreeListNode* newList(std::size_t capacity) {
    require(capacity <= std::numeric_limits<std::size_t>::max() / sizeof(Tree) / 2);
    auto* node = new (::operator new(sizeof(TreeListNode) + capacity * sizeof(Tree))) TreeListNode;
    node->capacity = capacity;
    return node;
}

/// Whether `node` is held by one tree alone, which may then change it. Acquire, so that the other trees' last reads
/// come before that change.
bool isAlone(TreeNode* node) noexcept {
    return node->references.load(std::memory_order_acquire) == 1;
}

/// Moves the elements when nobody else holds `from`, else copies them.
void fill(TreeListNode* to, TreeListNode* from) {
    const bool alone = isAlone(from);
    for (; to->size < from->size; ++to->size) {
        Tree& element = from->elements()[to->size];
        new (to->elements() + to->size) Tree(alone ? std::move(element) : element);
    }
}

/// The containers that wait for their release, linked through the words that counted their references. The lowest
/// bit of a link says that it leads to a map.
class ReleaseQueue {
  public:
    void push(TreeNode* node, bool isMap) noexcept {
        node->references.store(head_, std::memory_order_relaxed);
        // Not by std::bit_cast: the static analyzer of clang 14 crashes on reckoning with its result.
        head_ = reinterpret_cast<std::uintptr_t>(node) | (isMap ? 1U : 0U);
    }
    bool isEmpty() const noexcept { return head_ == 0; }

    void releaseOne() noexcept {
        auto* node = std::bit_cast<TreeNode*>(head_ & ~std::uintptr_t{1});
        const bool isMap = (head_ & 1U) != 0;
        head_ = node->references.load(std::memory_order_relaxed);
        if (isMap) {
            auto* map = static_cast<TreeMapNode*>(node);
            for (Tree& part : std::span(map->parts(), 2 * map->size))
                drop(part);
        } else {
            auto* list = static_cast<TreeListNode*>(node);
            for (Tree& element : std::span(list->elements(), list->size))
                drop(element);
        }
        ::operator delete(node);
    }

    void drop(TreeNodes::Form form, TreeNode* node) noexcept {
        if (!TreeNodes::letGo(node)) return;
        switch (form) {
            case TreeNodes::Form::list:
                return push(node, false);
            case TreeNodes::Form::map:
                return push(node, true);
            case TreeNodes::Form::decimal:
                delete static_cast<TreeDecimalNode*>(node);
                return;
            case TreeNodes::Form::object:
                delete static_cast<TreeObjectNode*>(node);
                return;
            case TreeNodes::Form::longText:
                ::operator delete(node);
                return;
            case TreeNodes::Form::null:
            case TreeNodes::Form::boolean:
            case TreeNodes::Form::integer:
            case TreeNodes::Form::unsignedInteger:
            case TreeNodes::Form::floating:
            case TreeNodes::Form::shortText:
                return;
        }
    }

  private:
    void drop(Tree& tree) noexcept {
        const TreeNodes::Form form = TreeNodes::form(tree);
        if (form < TreeNodes::Form::decimal) return;
        if (auto* node = TreeNodes::node<TreeNode>(tree)) drop(form, node);
    }

    std::uintptr_t head_ = 0;
};

}  // namespace

TreeWords TreeNodes::text(std::string_view first, std::string_view second) {
    const std::size_t size = first.size() + second.size();
    if (size <= Tree::kShortText && second.empty()) return shortText(first);
    char joined[Tree::kShortText];
    char* to = joined;
    TreeTextNode* node = nullptr;
    if (size > Tree::kShortText) {
        node = new (::operator new(sizeof(TreeTextNode) + size)) TreeTextNode;
        to = node->bytes();
    }
    if (!first.empty()) std::memcpy(to, first.data(), first.size());
    if (!second.empty()) std::memcpy(to + first.size(), second.data(), second.size());
    if (node == nullptr) return shortText({joined, size});
    TreeWords words = wordsOf(Form::longText, node);
    words.meta |= size;
    return words;
}

TreeWords TreeNodes::list(std::span<const TreeWords> elements) {
    if (elements.empty()) return {0, Tree::metaOf(Form::list)};
    TreeListNode* node = newList(elements.size());
    for (const TreeWords& words : elements)
        new (node->elements() + node->size++) Tree(adopt(words));
    return wordsOf(Form::list, node);
}

TreeListNode* TreeNodes::ownList(Tree& tree, std::size_t more) {
    auto* old = node<TreeListNode>(tree);
    const std::size_t size = old == nullptr ? 0 : old->size;
    if (old != nullptr && isAlone(old) && old->capacity - size >= more) return old;
    // Twice the size when it grows: appending one by one stays linear.
    TreeListNode* own = newList(more == 0 ? size : std::max({size + more, size * 2, std::size_t{4}}));
    if (old != nullptr) fill(own, old);
    tree = adopt(wordsOf(Form::list, own));
    return own;
}

bool TreeNodes::letGo(TreeNode* node) noexcept {
    // A sole owner needs no read-modify-write, and most nodes have one.
    if (node->references.load(std::memory_order_acquire) == 1) return true;
    return node->references.fetch_sub(1, std::memory_order_acq_rel) == 1;
}

void TreeNodes::release(Form form, TreeNode* node) noexcept {
    ReleaseQueue queue;
    queue.drop(form, node);
    while (!queue.isEmpty())
        queue.releaseOne();
}

}  // namespace kestrav
