#pragma once

#include "json/tree/Tree.h"
#include "json/value/JSONError.h"
#include "json/value/JSONKey.h"

namespace kestrav {

/// Whether `key` is of the sort that addresses members of `container`, be such a member there or not.
bool suits(const JSONKey& key, const Tree& container) noexcept;

/// Why `key` leads to nothing in `container`. People and programs know these messages: see docs/frozen.md.
JSONError lookupError(const Tree& container, const JSONKey& key);

}  // namespace kestrav
