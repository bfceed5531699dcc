#pragma once

#include "json/tree/TreeNode.h"
#include "json/tree/TreeNodes.h"

namespace kestrav {

/// Lets a tree's reference to its node go, and frees whatever nobody holds any more. What lies below waits in a queue,
/// linked through the nodes themselves, so that no depth of nesting needs any stack or memory.
void releaseNode(TreeNodes::Form form, TreeNode* node) noexcept;

}  // namespace kestrav
