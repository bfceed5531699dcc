#pragma once

#include <memory>

#include "json/tree/Tree.h"
#include "json/tree/TreeNode.h"

namespace kestrav {

// The nodes of what has no parts and yet doesn't fit into a tree's two words.

struct TreeTextNode : TreeNode {  // its bytes follow it
    using TreeNode::TreeNode;
    char* bytes() noexcept { return reinterpret_cast<char*>(this + 1); }
};
static_assert(sizeof(TreeTextNode) == sizeof(std::uint64_t));

struct TreeDecimalNode : TreeNode {
    explicit TreeDecimalNode(const Decimal& number) noexcept : value(number) {}
    Decimal value;
};

struct TreeObjectNode : TreeNode {
    explicit TreeObjectNode(std::shared_ptr<const TreeObject> object) noexcept : value(std::move(object)) {}
    std::shared_ptr<const TreeObject> value;
};

}  // namespace kestrav
