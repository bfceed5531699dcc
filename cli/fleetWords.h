#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "outcome/WriteState.h"

namespace kestrav {

/// How far the writes to several accessories have come, for one line on a terminal: how many have ended, and how many
/// are in which phase. Empty where there is nothing to be said.
std::string fleetWords(std::size_t ended, const std::vector<WriteState>& states);

}  // namespace kestrav
