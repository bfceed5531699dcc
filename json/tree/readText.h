#pragma once

#include <string>

#include "json/tree/NodeArena.h"
#include "json/tree/ReadFailure.h"
#include "json/tree/TreeNodes.h"

namespace kestrav {

/// Reads the text whose opening quote stands in front of `at` into `words`, which take nothing over but what they get.
/// Texts with escapes are put together in `scratch` first. Returns the byte behind the closing quote, or a null pointer
/// after noting why there is none.
const char* readText(const char* at, const char* end, TreeWords& words, NodeArena& arena, std::string& scratch,
                     ReadFailure& failure);

}  // namespace kestrav
