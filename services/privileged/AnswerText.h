#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "services/privileged/Outcome.h"

namespace kestrav {

/// The updater reads a reply once, with room for 10240 bytes; a text stays below that.
inline constexpr std::size_t longestAnswer = 10239;

/// `text` from outside, fit to stand in an answer or a log line: control characters (C0, DEL and C1) as \xNN, bytes
/// that are not UTF-8 as U+FFFD, and cut with "..." where it would be longer than `bytes`, never within a character.
std::string shown(std::string_view text, std::size_t bytes = 300);

/// The whole answer for a problem: "Refused: ..." or "Failed: ...", at most `longestAnswer` bytes.
std::string answerFor(const Problem& problem);

/// The system's words for an error number, for example "No space left on device".
std::string systemWords(int errorNumber);

}  // namespace kestrav
