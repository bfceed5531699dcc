#include <algorithm>

#include "json/JSON.h"

namespace kestrav {
namespace {

bool equalsIgnoringCase(std::string_view text, std::string_view lowerCase) {
    return std::ranges::equal(text, lowerCase, [](char left, char right) {
        return (left >= 'A' && left <= 'Z' ? left - 'A' + 'a' : left) == right;
    });
}

}  // namespace

std::optional<bool> JSON::boolean() const {
    return type() == Type::bool_ ? std::optional(rawBool()) : std::nullopt;
}

std::optional<std::string> JSON::string() const {
    return type() == Type::string ? std::optional(rawString()) : std::nullopt;
}

std::optional<std::vector<JSON>> JSON::array() const {
    if (type() != Type::array) return std::nullopt;
    std::vector<JSON> elements;
    elements.reserve(object_.size());
    for (std::size_t at = 0; at < object_.size(); ++at)
        elements.emplace_back(object_.element(at));
    return elements;
}

std::optional<Tree> JSON::arrayObject() const {
    return type() == Type::array ? std::optional(object_) : std::nullopt;
}

std::optional<std::map<std::string, JSON>> JSON::dictionary() const {
    if (type() != Type::dictionary) return std::nullopt;
    std::map<std::string, JSON> members;
    for (std::size_t at = 0; at < object_.size(); ++at) {
        members.emplace(object_.keyAt(at), object_.valueAt(at));
    }
    return members;
}

std::optional<Tree> JSON::dictionaryObject() const {
    return type() == Type::dictionary ? std::optional(object_) : std::nullopt;
}

std::optional<Number> JSON::number() const {
    if (type() == Type::number) return rawNumber();
    return type() == Type::bool_ ? std::optional(Number(rawBool() ? 1 : 0)) : std::nullopt;
}

std::optional<URL> JSON::url() const {
    if (type() != Type::string) return std::nullopt;
    const auto encoded = percentEncodedForQuery(*object_.text());
    return encoded ? URL::parse(*encoded) : std::nullopt;
}

bool JSON::boolValue() const {
    switch (type()) {
        case Type::bool_:
            return rawBool();
        case Type::number:
            return rawNumber().boolValue();
        case Type::string:
            return std::ranges::any_of(std::array{"true", "y", "t"}, [text = *object_.text()](const char* word) {
                return equalsIgnoringCase(text, word);
            });
        case Type::array:
        case Type::dictionary:
        case Type::null:
        case Type::unknown:
            return false;
    }
    return false;
}

std::string JSON::stringValue() const {
    switch (type()) {
        case Type::string:
            return rawString();
        case Type::number:
            return rawNumber().stringValue();
        case Type::bool_:
            return rawBool() ? "true" : "false";
        case Type::array:
        case Type::dictionary:
        case Type::null:
        case Type::unknown:
            return {};
    }
    return {};
}

Number JSON::numberValue() const {
    switch (type()) {
        case Type::string: {
            const Number parsed = Number::decimalNumber(*object_.text());
            return parsed == Number(Decimal{.notANumber = true}) ? Number(Decimal{}) : parsed;
        }
        case Type::number:
            return rawNumber();
        case Type::bool_:
            return Number(rawBool() ? 1 : 0);
        case Type::array:
        case Type::dictionary:
        case Type::null:
        case Type::unknown:
            return Number(0.0);
    }
    return Number(0.0);
}

void JSON::setURL(const std::optional<URL>& value) {
    setObject(value ? Tree(value->absoluteString()) : Tree());
}

}  // namespace kestrav
