#pragma once

#include "json/tree/Tree.h"
#include "json/value/JSONError.h"
#include "json/value/JSONKey.h"

namespace kestrav {

/// Why `key` leads to nothing in `container`. People and programs know these messages: see docs/frozen.md.
JSONError lookupError(const Tree& container, const JSONKey& key);

}  // namespace kestrav
