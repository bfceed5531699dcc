#include "json/tree/unlentCopy.h"

#include <vector>

#include "json/tree/TreeMapNode.h"

namespace kestrav {
namespace {

/// The node that may have been lent; a null pointer for a tree without one.
TreeNode* nodeOf(const Tree& tree) {
    return TreeNodes::form(tree) < TreeNodes::Form::decimal ? nullptr : TreeNodes::node<TreeNode>(tree);
}

Tree shared(const Tree& part) {
    if (TreeNode* node = nodeOf(part)) node->retain();
    return TreeNodes::adopt(TreeNodes::words(part));
}

/// A copy of the node alone, whose parts are shared even where that must not last.
Tree shallowCopy(TreeNodes::Form form, TreeNode* node) {
    if (form == TreeNodes::Form::map) {
        auto* map = static_cast<TreeMapNode*>(node);
        auto* copy = TreeMapNode::make(map->size);
        for (std::size_t at = 0; at < map->size; ++at)
            copy->add(shared(map->key(at)), shared(map->value(at)));
        return TreeNodes::adopt(TreeNodes::wordsOf(form, copy));
    }
    auto* list = static_cast<TreeListNode*>(node);
    auto* copy = TreeListNode::make(list->size);
    for (; copy->size < list->size; ++copy->size)
        new (copy->elements() + copy->size) Tree(shared(list->elements()[copy->size]));
    return TreeNodes::adopt(TreeNodes::wordsOf(form, copy));
}

std::span<Tree> partsOf(const Tree& container) {
    if (container.isMap()) {
        auto* map = TreeNodes::node<TreeMapNode>(container);
        return {map->parts(), std::size_t{2} * map->size};
    }
    auto* list = TreeNodes::node<TreeListNode>(container);
    return {list->elements(), list->size};
}

}  // namespace

TreeWords unlentCopy(TreeNodes::Form form, TreeNode* node) {
    Tree top = shallowCopy(form, node);
    std::vector<const Tree*> open{&top};
    while (!open.empty()) {
        const Tree& container = *open.back();
        open.pop_back();
        for (Tree& part : partsOf(container)) {
            TreeNode* below = nodeOf(part);
            if (below == nullptr || !below->isLent()) continue;
            part = shallowCopy(TreeNodes::form(part), below);
            open.push_back(&part);
        }
    }
    return TreeNodes::give(std::move(top));
}

}  // namespace kestrav
