#pragma once

#include <cstddef>
#include <string>

#include "base/Outcome.h"
#include "protocol/wire.h"

namespace kestrav {

/// The updater reads a reply once; a text stays below the room that it has for it.
inline constexpr std::size_t kLongestAnswer = kReplyRoom - 1;

/// The whole answer for a problem: "Refused: ..." or "Failed: ...", at most `kLongestAnswer` bytes.
std::string answerFor(const Problem& problem);

}  // namespace kestrav
