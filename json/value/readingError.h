#pragma once

#include <string_view>

#include "json/tree/readJSON.h"
#include "json/value/JSONError.h"

namespace kestrav {

/// What the reader found wrong with `document`, as an error with its place.
JSONError readingError(const ReadError& error, std::string_view document);

}  // namespace kestrav
