#pragma once

#include <string>

#include "outcome/WriteState.h"

namespace kestrav {

/// How far a write has come, for one line on a terminal; empty where there is nothing to be said.
std::string progressWords(const WriteState& state);

}  // namespace kestrav
