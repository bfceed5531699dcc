#include "json/value/URL.h"

#include "json/value/isURLReference.h"

namespace kestrav::json {

std::optional<URL> URL::parse(std::string_view text) {
    if (text.empty() || !isURLReference(text)) return std::nullopt;
    return URL(text);
}

}  // namespace kestrav::json
