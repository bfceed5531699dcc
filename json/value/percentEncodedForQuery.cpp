#include "json/value/percentEncodedForQuery.h"

#include <boost/url/encode.hpp>
#include <boost/url/rfc/pchars.hpp>

#include "base/utf8.h"

namespace kestrav::json {

std::optional<std::string> percentEncodedForQuery(std::string_view text) {
    constexpr auto kQueryAllowed = boost::urls::pchars + '/' + '?';
    if (!isValidUTF8(text)) return std::nullopt;
    return boost::urls::encode({text.data(), text.size()}, kQueryAllowed);
}

}  // namespace kestrav::json
