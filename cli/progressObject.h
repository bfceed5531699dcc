#pragma once

#include <string>

#include "outcome/WriteState.h"

namespace kestrav {

/// How far a write has come, for programs: one JSON object without a line's end. docs/kestravctl.schema.json describes
/// it.
std::string progressObject(const WriteState& state);

}  // namespace kestrav
