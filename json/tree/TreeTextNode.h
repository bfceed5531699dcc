#pragma once

#include "json/tree/TreeNode.h"

namespace kestrav {

/// The node of a text that is too long for a tree's two words; its bytes follow it.
struct TreeTextNode : TreeNode {
    using TreeNode::TreeNode;
    char* bytes() noexcept { return reinterpret_cast<char*>(this + 1); }
};
static_assert(sizeof(TreeTextNode) == sizeof(std::uint64_t));

}  // namespace kestrav
