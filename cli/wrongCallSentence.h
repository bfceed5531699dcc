#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace kestrav {

/// What to say of a call that `error` has broken off: the word that it stumbled over, the one that was meant perhaps,
/// and where to read on.
std::string wrongCallSentence(const CLI::App& commandLine, const CLI::ParseError& error);

}  // namespace kestrav
