#pragma once

#include <memory>
#include <utility>

#include "json/tree/Tree.h"
#include "json/tree/TreeNode.h"

namespace kestrav {

/// The node of an object that JSON has no form for.
struct TreeObjectNode : TreeNode {
    explicit TreeObjectNode(std::shared_ptr<const TreeObject> object) noexcept : value(std::move(object)) {}
    std::shared_ptr<const TreeObject> value;
};

}  // namespace kestrav
