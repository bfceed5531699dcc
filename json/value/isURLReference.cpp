#include "json/value/isURLReference.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <optional>

#include "json/value/isPathCharacter.h"

// The functions bear the names of the rules in RFC 3986, appendix A.
namespace kestrav::json {
namespace {

bool isDigit(char character) noexcept {
    return character >= '0' && character <= '9';
}

bool isHexDigit(char character) noexcept {
    return isDigit(character) || (character >= 'a' && character <= 'f') || (character >= 'A' && character <= 'F');
}

bool isLetter(char character) noexcept {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

/// Whether every character is one that a path may hold, or one of `more`, or begins an encoded byte, but none of
/// `less`.
bool consistsOf(std::string_view text, std::string_view more, std::string_view less) noexcept {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '%') {
            if (text.size() - at < 3 || !isHexDigit(text[at + 1]) || !isHexDigit(text[at + 2])) return false;
            at += 2;
        } else if (less.find(text[at]) != std::string_view::npos ||
                   (!isPathCharacter(text[at]) && more.find(text[at]) == std::string_view::npos)) {
            return false;
        }
    }
    return true;
}

bool isScheme(std::string_view text) noexcept {
    return !text.empty() && isLetter(text.front()) && std::ranges::all_of(text, [](char character) {
        return isLetter(character) || isDigit(character) || character == '+' || character == '-' || character == '.';
    });
}

bool isIPv6Address(std::string_view text) noexcept {
    std::array<char, INET6_ADDRSTRLEN> terminated{};
    if (text.size() >= terminated.size() || text.find('\0') != std::string_view::npos) return false;
    std::ranges::copy(text, terminated.begin());
    in6_addr address{};
    return ::inet_pton(AF_INET6, terminated.data(), &address) == 1;
}

/// "v", digits of the version, a dot and the address in a form to come.
bool isIPvFuture(std::string_view text) noexcept {
    const auto dot = text.find('.');
    if (dot == std::string_view::npos || dot < 2 || (text.front() != 'v' && text.front() != 'V')) return false;
    const auto version = text.substr(1, dot - 1);
    const auto address = text.substr(dot + 1);
    return std::ranges::all_of(version, isHexDigit) && !address.empty() &&
           std::ranges::all_of(address, [](char character) { return isPathCharacter(character) && character != '@'; });
}

/// What stands behind the host: nothing, or a colon and the digits of a port, of which there may be none.
bool isPortOrNothing(std::string_view text) noexcept {
    return text.empty() || (text.front() == ':' && std::ranges::all_of(text.substr(1), isDigit));
}

bool isHostAndPort(std::string_view text) noexcept {
    if (text.starts_with('[')) {
        const auto end = text.find(']');
        if (end == std::string_view::npos) return false;
        const auto literal = text.substr(1, end - 1);
        return (isIPv6Address(literal) || isIPvFuture(literal)) && isPortOrNothing(text.substr(end + 1));
    }
    const auto name = text.substr(0, text.find(':'));
    return consistsOf(name, "", "@") && isPortOrNothing(text.substr(name.size()));
}

bool isAuthority(std::string_view text) noexcept {
    const auto at = text.find('@');
    if (at == std::string_view::npos) return isHostAndPort(text);
    return consistsOf(text.substr(0, at), "", "") && isHostAndPort(text.substr(at + 1));
}

/// Takes what begins with `mark` off the end of `text`, and gives what stood behind the mark.
std::optional<std::string_view> takeBehind(char mark, std::string_view& text) noexcept {
    const auto at = text.find(mark);
    if (at == std::string_view::npos) return std::nullopt;
    const auto behind = text.substr(at + 1);
    text = text.substr(0, at);
    return behind;
}

}  // namespace

bool isURLReference(std::string_view text) noexcept {
    const auto fragment = takeBehind('#', text);
    const auto query = takeBehind('?', text);
    if (!consistsOf(fragment.value_or(""), "/?", "") || !consistsOf(query.value_or(""), "/?", "")) return false;
    // A colon in front of the first slash ends a scheme: the first segment of a relative path holds none.
    const auto mark = text.find_first_of(":/");
    if (mark != std::string_view::npos && text[mark] == ':') {
        if (!isScheme(text.substr(0, mark))) return false;
        text.remove_prefix(mark + 1);
    }
    if (text.starts_with("//")) {
        text.remove_prefix(2);
        const auto authority = text.substr(0, text.find('/'));
        if (!isAuthority(authority)) return false;
        text.remove_prefix(authority.size());
    }
    return consistsOf(text, "/", "");
}

}  // namespace kestrav::json
