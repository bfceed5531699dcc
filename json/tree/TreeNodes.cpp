#include "json/tree/TreeNodes.h"

#include <new>

#include "json/tree/TreeMapNode.h"
#include "json/tree/TreeTextNode.h"

namespace kestrav {

TreeWords TreeNodes::text(std::string_view text, NodeArena* arena) {
    if (text.size() <= kShortText) return shortText(text);
    const std::size_t bytes = sizeof(TreeTextNode) + text.size();
    const NodeArena::Place place = arena == nullptr ? NodeArena::Place{::operator new(bytes), 0} : arena->take(bytes);
    auto* node = new (place.at) TreeTextNode(place.steps);
    std::memcpy(node->bytes(), text.data(), text.size());
    return {std::bit_cast<std::uint64_t>(node), longTextWords(text.size()).meta};
}

TreeWords TreeNodes::list(std::span<const TreeWords> elements, NodeArena* arena) {
    if (elements.empty()) return {0, Tree::metaOf(Form::list)};
    TreeListNode* node = TreeListNode::make(elements.size(), arena);
    Tree* place = node->elements();
    for (const TreeWords& words : elements)
        adoptAt(place++, words);
    node->size = static_cast<std::uint32_t>(elements.size());
    return wordsOf(Form::list, node);
}

TreeWords TreeNodes::map(std::span<const TreeWords> keysAndValues, NodeArena* arena) {
    if (keysAndValues.empty()) return {0, Tree::metaOf(Form::map)};
    TreeMapNode* node = TreeMapNode::make(keysAndValues.size() / 2, arena);
    node->addAll(keysAndValues);
    return wordsOf(Form::map, node);
}

Tree* TreeNodes::ownElement(Tree& tree, std::size_t index) {
    if (!tree.isList() || index >= tree.size()) return nullptr;
    return TreeListNode::ownElement(tree, index);
}

Tree* TreeNodes::ownMember(Tree& tree, std::string_view key) {
    const Tree* found = tree.member(key);
    if (found == nullptr) return nullptr;
    // By position: `key` may lie in the map, which moves.
    const auto position = found - node<TreeMapNode>(tree)->parts();
    return TreeMapNode::own(tree, 0)->parts() + position;
}

}  // namespace kestrav
