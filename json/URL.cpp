#include "json/URL.h"

#include <boost/url/encode.hpp>
#include <boost/url/parse.hpp>
#include <boost/url/rfc/pchars.hpp>

#include "base/utf8.h"

namespace kestrav {

std::optional<URL> URL::parse(std::string_view text) {
    const auto parsed = boost::urls::parse_uri_reference({text.data(), text.size()});
    if (text.empty() || !parsed) return std::nullopt;
    // The library takes "http://host:x/" and calls the x a path, but behind a host a path begins with a slash.
    const auto path = parsed->encoded_path();
    if (parsed->has_authority() && !path.empty() && path.front() != '/') return std::nullopt;
    return URL(text);
}

std::optional<std::string> percentEncodedForQuery(std::string_view text) {
    constexpr auto kQueryAllowed = boost::urls::pchars + '/' + '?';
    if (!isValidUTF8(text)) return std::nullopt;
    return boost::urls::encode({text.data(), text.size()}, kQueryAllowed);
}

}  // namespace kestrav
