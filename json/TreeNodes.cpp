#include "json/TreeNodes.h"

#include <algorithm>

#include "base/stopProcess.h"

namespace kestrav {
namespace {

template <class Word>
std::uint64_t load(const char* from) noexcept {
    Word word;
    std::memcpy(&word, from, sizeof word);
    return word;
}

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
        head_ = std::bit_cast<std::uintptr_t>(node) | (isMap ? 1U : 0U);
    }
    bool isEmpty() const noexcept { return head_ == 0; }

    void releaseOne() noexcept {
        auto* node = std::bit_cast<TreeNode*>(head_ & ~std::uintptr_t{1});
        const bool isMap = (head_ & 1U) != 0;
        head_ = node->references.load(std::memory_order_relaxed);
        if (isMap) {
            auto* map = static_cast<TreeMapNode*>(node);
            for (TreeMember& member : std::span(map->members(), map->size)) {
                drop(member.key);
                drop(member.value);
            }
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

TreeWords TreeNodes::shortText(std::string_view text) noexcept {
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

std::string_view TreeNodes::textView(const Tree& tree) noexcept {
    if (tree.form() == Form::shortText) {
        return {reinterpret_cast<const char*>(&tree), tree.meta_ >> (Tree::kTagShift + 4)};
    }
    return {node<TreeTextNode>(tree)->bytes(), tree.meta_ & ((std::uint64_t{1} << Tree::kTagShift) - 1)};
}

TreeKey TreeNodes::key(std::string_view text) noexcept {
    if (text.size() <= Tree::kShortText) return {text, shortText(text)};
    return {text, {0, Tree::metaOf(Form::longText) | text.size()}};
}

bool TreeKey::names(const Tree& key) const noexcept {
    const TreeWords other = TreeNodes::words(key);
    // The second words agree in form and size, and in the end of a short text.
    if (other.meta != words.meta) return false;
    if (other.payload == words.payload) return true;
    return TreeNodes::form(key) == TreeNodes::Form::longText && TreeNodes::textView(key) == text;
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
