#include "json/value/URL.h"

#include <boost/url/parse.hpp>

namespace kestrav::json {

std::optional<URL> URL::parse(std::string_view text) {
    const auto parsed = boost::urls::parse_uri_reference({text.data(), text.size()});
    if (text.empty() || !parsed) return std::nullopt;
    // The library takes "http://host:x/" and calls the x a path, but behind a host a path begins with a slash.
    const auto path = parsed->encoded_path();
    if (parsed->has_authority() && !path.empty() && path.front() != '/') return std::nullopt;
    return URL(text);
}

}  // namespace kestrav::json
