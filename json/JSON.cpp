#include "json/JSON.h"

#include "json/collation.h"

namespace kestrav {
namespace {

JSONError readingError(const ReadError& error) {
    const std::string message = error.message + " at byte " + std::to_string(error.offset);
    return {std::string(ReadingErrorDomain), ErrorUnreadable, {{std::string(LocalizedDescriptionKey), message}}};
}

Tree listOf(const std::vector<JSON>& elements) {
    Tree list = Tree::list();
    for (const JSON& element : elements)
        list.append(element.object());
    return list;
}

}  // namespace

JSON::JSON(const std::vector<JSON>& elements) {
    setObject(listOf(elements));
}

JSON::JSON(std::span<const std::byte> document, ReadingOptions options, JSONError* error) {
    auto result = readJSON({reinterpret_cast<const char*>(document.data()), document.size()}, options);
    if (Tree* tree = std::get_if<Tree>(&result)) {
        setObject(std::move(*tree));
    } else if (error != nullptr) {
        *error = readingError(std::get<ReadError>(result));
    }
}

JSON JSON::parse(std::string_view document) {
    return JSON(std::as_bytes(std::span(document)), ReadingOptions::allowFragments);
}

Tree JSON::object() const {
    return type() == Type::unknown ? rawNull() : object_;
}

void JSON::setObject(Tree object) {
    putPast();
    object_ = std::move(object);
    if (object_.kind() == Tree::Kind::object) setUnsupported();
}

/// Puts what is held where the field of its kind keeps it, and clears the error.
void JSON::putPast() {
    const Tree::Kind kind = object_.kind();
    const bool hasContent = kind != Tree::Kind::null && kind != Tree::Kind::object;
    if (!rest_ && !hasContent) return;
    Rest rest = past();
    rest.error.reset();
    if (object_.isList()) rest.array = std::move(object_);
    if (object_.isMap()) rest.dictionary = std::move(object_);
    if (kind == Tree::Kind::text) rest.string = std::move(object_);
    if (kind == Tree::Kind::number) rest.number = std::move(object_);
    if (kind == Tree::Kind::boolean) rest.boolean = *object_.boolean();
    rest_ = std::make_shared<const Rest>(std::move(rest));
}

const JSON::Rest& JSON::past() const noexcept {
    static const Rest nothing;
    return rest_ ? *rest_ : nothing;
}

void JSON::setError(JSONError error) {
    Rest rest = past();
    rest.error = std::move(error);
    rest_ = std::make_shared<const Rest>(std::move(rest));
}

void JSON::setUnsupported() {
    setError(makeJSONError(ErrorUnsupportedType, "It is a unsupported type"));
}

std::string JSON::rawString() const {
    const Tree& field = type() == Type::string ? object_ : past().string;
    return std::string(field.text().value_or(std::string_view()));
}

Number JSON::rawNumber() const {
    const Tree& field = type() == Type::number ? object_ : past().number;
    return field.number().value_or(Number());
}

std::optional<JSONError> JSON::error() const {
    return past().error;
}

bool JSON::exists() const {
    if (!past().error) return true;
    const std::int64_t code = past().error->code;
    return code != ErrorNotExist && code != ErrorIndexOutOfBounds && code != ErrorWrongType;
}

std::vector<std::byte> JSON::rawData(WritingOptions options) const {
    try {
        const std::string text = dataWithJSONObject(object(), options);
        const auto bytes = std::as_bytes(std::span(text));
        return {bytes.begin(), bytes.end()};
    } catch (const InvalidJSONObject&) {
        throw JSONException(makeJSONError(ErrorInvalidJSON, "JSON is invalid"));
    }
}

std::optional<std::string> JSON::rawString(TextEncoding encoding, WritingOptions options) const {
    switch (type()) {
        case Type::array:
        case Type::dictionary:
            if (!isValidJSONObject(object_)) return std::nullopt;
            return decodedText(dataWithJSONObject(object_, options), encoding);
        case Type::string:
            return rawString();
        case Type::number:
            return rawNumber().stringValue();
        case Type::bool_:
            return rawBool() ? "true" : "false";
        case Type::null:
            return "null";
        case Type::unknown:
            return std::nullopt;
    }
    return std::nullopt;
}

bool operator==(const JSON& left, const JSON& right) {
    // Trees of unknown kind are compared by identity, but values of unknown kind are equal to nothing.
    return left.type() != Type::unknown && left.object_ == right.object_;
}

std::partial_ordering operator<=>(const JSON& left, const JSON& right) {
    if (left.type() == right.type() && left.type() == Type::number) return left.rawNumber().compare(right.rawNumber());
    if (left.type() == right.type() && left.type() == Type::string) return collate(*left.text(), *right.text());
    return left == right ? std::partial_ordering::equivalent : std::partial_ordering::unordered;
}

}  // namespace kestrav
