#include "json/value/readingError.h"

#include <string>

namespace kestrav {

JSONError readingError(const ReadError& error, std::string_view document) {
    const std::string message = error.message + " at byte " + std::to_string(error.offset);
    return {std::string(json::ReadingErrorDomain),
            json::ErrorUnreadable,
            {{std::string(json::LocalizedDescriptionKey), message}},
            json::TextPlace::of(document, error.offset)};
}

}  // namespace kestrav
