#pragma once

#include <span>
#include <string>
#include <string_view>

namespace kestrav {

/// The word among `known` that somebody may have meant who typed `typed`: the one that is fewest slips away (a letter
/// too many, too few, another one, or two that changed places), if those are few for its length. Empty when none is.
std::string nearestWord(std::string_view typed, std::span<const std::string> known);

}  // namespace kestrav
