#pragma once

#include "json/tree/Decimal.h"
#include "json/tree/TreeNode.h"

namespace kestrav {

/// The node of a decimal number, which is more than a tree's two words hold.
struct TreeDecimalNode : TreeNode {
    explicit TreeDecimalNode(const Decimal& number) noexcept : value(number) {}
    Decimal value;
};

}  // namespace kestrav
