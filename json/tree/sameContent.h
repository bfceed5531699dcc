#pragma once

#include "json/tree/Tree.h"

namespace kestrav {

/// What `==` says of two trees. Any depth of nesting is compared without recursion.
bool sameContent(const Tree& left, const Tree& right);

}  // namespace kestrav
