#pragma once

#include "json/tree/Tree.h"
#include "json/value/JSONKey.h"

namespace kestrav {

/// The element or member of `container`, for changing it; a null pointer when the key doesn't suit it or there is none.
Tree* mutableMember(Tree& container, const JSONKey& key);

/// Puts `value` under `key`: in place of the element or member that is there, or as a new member of a map. Whether it
/// could.
bool putMember(Tree& container, const JSONKey& key, Tree value);

}  // namespace kestrav
