#pragma once

#include <cerrno>
#include <string>

#include "base/Outcome.h"

namespace kestrav {

/// What the system refused to do: "WHAT: the system's words for the error." with the error as the cause.
Problem systemProblem(const std::string& what, int errorNumber = errno);

/// The same without anything before the system's words, for those who say themselves what it was about.
Problem systemProblem(int errorNumber);

}  // namespace kestrav
