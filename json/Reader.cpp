#include "json/Reader.h"

#include <boost/json/basic_parser_impl.hpp>
#include <charconv>
#include <system_error>

#include "json/TreeBuilder.h"

namespace kestrav {
namespace {

/// Digits that every double keeps; a longer number is more than the double nearest to it.
constexpr std::int64_t kDoubleDigits = 17;

/// Texts this short hold no more than 17 digits: there is a point or an exponent among them, for without either a
/// number of this length is an integer of 64 bits.
constexpr std::size_t kSurelySuitsDouble = 18;

/// Whether a number has so few digits that a double keeps them, as far as a quick look tells: zeros at its end count,
/// those in front don't. An integer beyond 64 bits has more.
bool surelySuitsDouble(std::string_view text) {
    if (text.size() <= kSurelySuitsDouble) return true;
    std::size_t at = 0;
    while (at < text.size() && (text[at] == '-' || text[at] == '0' || text[at] == '.'))
        ++at;
    std::int64_t digits = 0;
    for (; at < text.size() && (text[at] | 0x20) != 'e'; ++at)
        digits += text[at] != '.' ? 1 : 0;
    return digits <= kDoubleDigits;
}

bool suitsDouble(const ScannedDecimal& scan) {
    if (scan.isInteger && scan.integerDigits <= Decimal::kMaxDigits) return false;
    return scan.significant <= kDoubleDigits;
}

ReadError errorAt(std::size_t offset, const boost::json::error_code& error) {
    if (error == boost::json::error::exponent_overflow) return {"number out of range", offset};
    return {error.message(), offset};
}

}  // namespace

bool TreeBuilder::addNumber(std::string_view text, Error& error) {
    double value = 0;
    const char* end = text.data() + text.size();
    const bool fits = std::from_chars(text.data(), end, value).ec == std::errc{};
    if (fits && surelySuitsDouble(text)) return add(Tree(value));
    const ScannedDecimal scan = scanDecimal(text);
    if (scan.outOfRange) {
        error = boost::json::error::exponent_overflow;
        return false;
    }
    if (fits && suitsDouble(scan)) return add(Tree(value));
    return add(Tree(scan.value));
}

std::variant<Tree, ReadError> readJSON(std::string_view bytes, ReadingOptions options) {
    boost::json::parse_options grammar;
    grammar.max_depth = kMaxReadingDepth;
    boost::json::basic_parser<TreeBuilder> parser(grammar);
    boost::json::error_code error;
    const std::size_t used = parser.write_some(false, bytes.data(), bytes.size(), error);
    if (error) return errorAt(used, error);
    if (used < bytes.size()) return ReadError{"more after the end of the document", used};
    Tree tree = parser.handler().take();
    if (!tree.isList() && !tree.isMap() && !contains(options, ReadingOptions::allowFragments)) {
        return ReadError{"neither a list nor a map at the top", 0};
    }
    return tree;
}

}  // namespace kestrav
