#pragma once

#include <string>

namespace kestrav {

/// The system's words for an error number, for example "No space left on device".
std::string systemWords(int errorNumber);

}  // namespace kestrav
