#pragma once

#include "json/tree/TreeNode.h"
#include "json/tree/TreeNodes.h"

namespace kestrav {

/// A copy of a list's or map's node that somebody may change through a pointer, and of all such nodes below it. What
/// can't be changed in that way is shared as usual. Does not recurse.
TreeWords unlentCopy(TreeNodes::Form form, TreeNode* node);

}  // namespace kestrav
