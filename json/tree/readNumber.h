#pragma once

#include "json/tree/ReadFailure.h"
#include "json/tree/TreeNodes.h"

namespace kestrav {

/// Reads the number at `at`, where a digit or a minus stands, into `words`, which take nothing over but what they get.
/// Returns its end, or a null pointer after noting why there is none. See readJSON() for which kind a number gets.
const char* readNumber(const char* at, const char* end, TreeWords& words, ReadFailure& failure);

}  // namespace kestrav
