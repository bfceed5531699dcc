#pragma once

#include "json/tree/Tree.h"
#include "json/value/JSONKey.h"

namespace kestrav {

/// Takes the element or member under `key` away; what follows moves up. Whether there was one.
bool removeMember(Tree& container, const JSONKey& key);

}  // namespace kestrav
