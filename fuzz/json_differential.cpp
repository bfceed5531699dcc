// Our reader against two others: Boost.JSON, which judges documents as strictly, and nlohmann's, for the numbers. What
// is accepted, where an error shows, and what was read must be the same. Where theirs differ on purpose stands below.

#include <bit>
#include <boost/json/basic_parser_impl.hpp>
#include <boost/version.hpp>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "base/stopProcess.h"
#include "json/tree/readJSON.h"

namespace kestrav {
namespace {

/// Takes Boost's events and does nothing with them: where it stops is all that is asked.
struct Nothing {
    using Error = boost::json::error_code;
    using Text = boost::json::string_view;

    static constexpr std::size_t max_object_size = std::size_t(-1);
    static constexpr std::size_t max_array_size = std::size_t(-1);
    static constexpr std::size_t max_key_size = std::size_t(-1);
    static constexpr std::size_t max_string_size = std::size_t(-1);

    bool on_document_begin(Error&) { return true; }
    bool on_document_end(Error&) { return true; }
    bool on_object_begin(Error&) { return true; }
    bool on_array_begin(Error&) { return true; }
    bool on_object_end(std::size_t, Error&) { return true; }
    bool on_array_end(std::size_t, Error&) { return true; }
    bool on_key_part(Text, std::size_t, Error&) { return true; }
    bool on_string_part(Text, std::size_t, Error&) { return true; }
    bool on_key(Text, std::size_t, Error&) { return true; }
    bool on_string(Text, std::size_t, Error&) { return true; }
    bool on_number_part(Text, Error&) { return true; }
    bool on_int64(std::int64_t, Text, Error&) { return true; }
    bool on_uint64(std::uint64_t, Text, Error&) { return true; }
    bool on_double(double, Text text, Error& error) {
        // Beyond the range of a Decimal we refuse what Boost takes for zero or infinite.
        if (!scanDecimal({text.data(), text.size()}).outOfRange) return true;
        error = boost::json::error::exponent_overflow;
        return false;
    }
    bool on_bool(bool, Error&) { return true; }
    bool on_null(Error&) { return true; }
    bool on_comment_part(Text, Error&) { return true; }
    bool on_comment(Text, Error&) { return true; }
};

/// Where Boost says these go on depends on how near the end of the document is.
bool isOfEscapes(const boost::json::error_code& error, std::string_view bytes, std::size_t offset) {
    using boost::json::error;
    if (error == error::expected_hex_digit || error == error::illegal_leading_surrogate ||
        error == error::illegal_trailing_surrogate)
        return true;
    const std::string_view before = bytes.substr(0, offset);
    return before.substr(before.size() < 8 ? 0 : before.size() - 8).find("\\u") != std::string_view::npos;
}

/// At which byte a document goes wrong differs from one version of Boost to the next: Debian 12's decides.
constexpr bool kBoostDecides = BOOST_VERSION / 100 == 1081;

void checkAgainstBoost(std::string_view bytes, const std::variant<Tree, ReadError>& own) {
    boost::json::parse_options grammar;
    grammar.max_depth = kMaxReadingDepth;
    boost::json::basic_parser<Nothing> parser(grammar);
    boost::json::error_code error;
    std::size_t used = parser.write_some(false, bytes.data(), bytes.size(), error);
    const auto* refused = std::get_if<ReadError>(&own);
    if (!error && used == bytes.size()) return require(refused == nullptr);
    // Zero is zero with whatever exponent; Boost refuses one that doesn't fit an int.
    if (error == boost::json::error::exponent_overflow && (refused == nullptr || refused->offset > used)) return;
    require(refused != nullptr);
    if (error && isOfEscapes(error, bytes, used)) return;
    if (kBoostDecides) require(refused->offset == used);
}

bool sameNumber(const Number& own, const nlohmann::json& other) {
    if (own.kind() == Number::Kind::integer && !other.is_number_float())
        return own.integer() == other.get<std::int64_t>();
    if (own.kind() == Number::Kind::unsignedInteger) return own.unsignedInteger() == other.get<std::uint64_t>();
    // An integer of ours is a double of nlohmann's when it has an exponent of its own making, such as -0.
    return own.doubleValue() == other.get<double>();
}

/// The last of equal keys wins with both; ours keeps the order of arrival, which nlohmann's does not.
bool same(const Tree& own, const nlohmann::json& other) {
    switch (own.kind()) {
        case Tree::Kind::null:
            return other.is_null();
        case Tree::Kind::boolean:
            return other.is_boolean() && other.get<bool>() == *own.boolean();
        case Tree::Kind::number:
            return other.is_number() && sameNumber(*own.number(), other);
        case Tree::Kind::text:
            return other.is_string() && other.get_ref<const std::string&>() == *own.text();
        case Tree::Kind::list:
            if (!other.is_array() || other.size() != own.size()) return false;
            for (std::size_t at = 0; at < own.size(); ++at)
                if (!same(own.element(at), other[at])) return false;
            return true;
        case Tree::Kind::map:
            if (!other.is_object() || other.size() != own.size()) return false;
            for (const auto& [key, value] : other.items())
                if (own.member(key) == nullptr || !same(*own.member(key), value)) return false;
            return true;
        case Tree::Kind::object:
            return false;
    }
    return false;
}

void check(std::string_view bytes) {
    const auto own = readJSON(bytes, ReadingOptions::allowFragments);
    checkAgainstBoost(bytes, own);
    const Tree* tree = std::get_if<Tree>(&own);
    if (tree == nullptr) return;
    const auto other = nlohmann::json::parse(bytes, nullptr, false);
    // nlohmann refuses numbers that no double holds, and takes a byte-order mark that we refuse.
    if (!other.is_discarded()) require(same(*tree, other));
}

}  // namespace
}  // namespace kestrav

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kestrav::check({reinterpret_cast<const char*>(data), size});
    return 0;
}
