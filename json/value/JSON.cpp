#include "json/value/JSON.h"

#include "base/stopProcess.h"
#include "json/value/JSONEditor.h"
#include "json/value/collate.h"
#include "json/value/decodedText.h"
#include "json/value/lookupError.h"
#include "json/value/percentEncodedForQuery.h"
#include "json/value/putMember.h"
#include "json/value/readingError.h"
#include "json/value/readsAsTrue.h"

namespace kestrav {
namespace {

template <class Index>
Index positionIn(const Tree& object, std::size_t position) noexcept {
    if (object.isList()) return Index::array(position);
    return object.isMap() ? Index::dictionary(position) : Index::null();
}

}  // namespace

JSON::JSON(const std::vector<JSON>& elements) {
    std::vector<Tree> objects;
    objects.reserve(elements.size());
    for (const JSON& element : elements)
        objects.push_back(element.object());
    object_ = Tree::list(std::move(objects));
}

JSON::JSON(std::span<const std::byte> document, ReadingOptions options, JSONError* error) {
    const std::string_view text(reinterpret_cast<const char*>(document.data()), document.size());
    auto result = readJSON(text, options);
    if (Tree* tree = std::get_if<Tree>(&result)) {
        object_ = std::move(*tree);
    } else if (error != nullptr) {
        *error = readingError(std::get<ReadError>(result), text);
    }
}

JSON JSON::parse(std::string_view document, JSONError* error) {
    return JSON(std::as_bytes(std::span(document)), ReadingOptions::allowFragments, error);
}

void JSON::setObject(Tree object) & {
    // All that can fail comes first.
    auto past = pastWith(object);
    past_ = std::move(past);
    object_ = std::move(object);
}

void JSON::setUnsupported() {
    past_ = pastWith(object_);
}

const JSON::Past& JSON::past() const noexcept {
    static const Past nothing;
    return past_ && !isBorrowed() ? *past_ : nothing;
}

/// The fields and the error once `next` is the object in place of the one that is held now.
// frozen: F75
std::shared_ptr<const JSON::Past> JSON::pastWith(const Tree& next) const {
    const Tree::Kind kind = object_.kind();
    const bool hasContent = kind != Tree::Kind::null && kind != Tree::Kind::object;
    if (!past_ && !hasContent && !next.isObject()) return nullptr;
    Past past = this->past();
    past.error.reset();
    if (object_.isList()) past.array = object_;
    if (object_.isMap()) past.dictionary = object_;
    if (kind == Tree::Kind::text) past.string = object_;
    if (kind == Tree::Kind::number) past.number = object_;
    if (kind == Tree::Kind::boolean) past.boolean = *object_.boolean();
    // frozen: F73
    if (next.isObject()) past.error = makeJSONError(json::ErrorUnsupportedType, "It is a unsupported type");
    return std::make_shared<const Past>(std::move(past));
}

// frozen: F74
bool JSON::exists() const noexcept {
    const std::optional<JSONError>& error = past().error;
    if (!error) return true;
    return error->code != json::ErrorNotExist && error->code != json::ErrorIndexOutOfBounds &&
           error->code != json::ErrorWrongType;
}

// frozen: F82
std::string JSON::rawString() const {
    const Tree& field = type() == Type::string ? object_ : past().string;
    return std::string(field.text().value_or(std::string_view()));
}

Number JSON::rawNumber() const {
    const Tree& field = type() == Type::number ? object_ : past().number;
    return field.number().value_or(Number());
}

/// Null with the error of the lookup; a value that carries an error already, which is neither list nor map, passes that
/// on.
JSON JSON::notFound(const JSONKey& key) const {
    Past past;
    past.error = this->past().error;
    if (!past.error) past.error = lookupError(object_, key);
    JSON null;
    null.past_ = std::make_shared<const Past>(std::move(past));
    return null;
}

JSON JSON::notFoundAlong(std::span<const JSONKey> path) const {
    const Tree* place = &object_;
    for (const JSONKey& key : path) {
        const Tree* next = findByKey(*place, key);
        // Every further key fails as well, and keeps the error of this one.
        if (next == nullptr) return place == &object_ ? notFound(key) : JSON(*place).notFound(key);
        place = next;
    }
    return *this;
}

JSONEditor JSON::at(std::span<const JSONKey> path) & {
    return {*this, path};
}

JSONEditor JSON::at(std::initializer_list<JSONKey> path) & {
    return {*this, std::span(path.begin(), path.size())};
}

bool JSON::append(JSON value) & {
    if (!object_.isList()) return false;
    object_.append(std::move(value).takeObject());
    return true;
}

bool JSON::insert(std::size_t index, JSON value) & {
    return at({}).insert(index, std::move(value));
}

bool JSON::remove(const JSONKey& key) & {
    return at({}).remove(key);
}

// frozen: F80
void JSON::assign(std::span<const JSONKey> path, const JSON& value) & {
    if (path.empty()) return;
    Tree object = value.object();
    Tree* target = &object_;
    for (; path.size() > 1; path = path.subspan(1)) {
        Tree* next = mutableMember(*target, path[0]);
        // What is taken from here as a value and stored back is null unless JSON has a form for it.
        if (next == nullptr) return static_cast<void>(putMember(*target, path[0], Tree()));
        if (next->isObject()) *next = Tree();
        target = next;
    }
    putMember(*target, path[0], std::move(object));
}

void JSON::assign(std::initializer_list<JSONKey> path, const JSON& value) & {
    assign(std::span(path.begin(), path.size()), value);
}

std::optional<std::string> JSON::string() const {
    return type() == Type::string ? std::optional(rawString()) : std::nullopt;
}

std::vector<JSON> JSON::elements() const {
    std::vector<JSON> elements;
    if (!object_.isList()) return elements;
    elements.reserve(object_.size());
    for (std::size_t at = 0; at < object_.size(); ++at)
        elements.emplace_back(object_.element(at));
    return elements;
}

std::map<std::string, JSON> JSON::members() const {
    std::map<std::string, JSON> members;
    if (!object_.isMap()) return members;
    for (std::size_t at = 0; at < object_.size(); ++at)
        members.emplace(object_.keyAt(at), object_.valueAt(at));
    return members;
}

const std::optional<std::vector<JSON>> JSON::array() const {
    return type() == Type::array ? std::optional(elements()) : std::nullopt;
}

const std::vector<JSON> JSON::arrayValue() const {
    return elements();
}

const std::optional<Tree> JSON::arrayObject() const {
    return type() == Type::array ? std::optional(object_) : std::nullopt;
}

const std::optional<std::map<std::string, JSON>> JSON::dictionary() const {
    return type() == Type::dictionary ? std::optional(members()) : std::nullopt;
}

const std::map<std::string, JSON> JSON::dictionaryValue() const {
    return members();
}

const std::optional<Tree> JSON::dictionaryObject() const {
    return type() == Type::dictionary ? std::optional(object_) : std::nullopt;
}

std::optional<Number> JSON::number() const {
    if (const auto boolean = object_.boolean()) return Number(*boolean ? 1 : 0);
    return object_.number();
}

std::optional<json::URL> JSON::url() const {
    if (type() != Type::string) return std::nullopt;
    // frozen: F81
    const auto encoded = json::percentEncodedForQuery(*object_.text());
    return encoded ? json::URL::parse(*encoded) : std::nullopt;
}

bool JSON::boolValue() const {
    if (const auto number = object_.number()) return number->boolValue();
    const auto text = object_.text();
    return text ? json::readsAsTrue(*text) : object_.boolean().value_or(false);
}

std::string JSON::stringValue() const {
    if (const auto text = object_.text()) return std::string(*text);
    if (const auto number = object_.number()) return number->stringValue();
    const auto boolean = object_.boolean();
    if (!boolean) return {};
    return *boolean ? "true" : "false";
}

Number JSON::numberValue() const {
    if (const auto found = number()) return *found;
    const auto text = object_.text();
    if (!text) return Number(0.0);
    // frozen: F78
    const Number parsed = Number::decimalNumber(*text);
    return parsed == Number(Decimal{.notANumber = true}) ? Number(Decimal{}) : parsed;
}

void JSON::setURL(const std::optional<json::URL>& value) & {
    setObject(value ? Tree(value->absoluteString()) : Tree());
}

// frozen: F76
bool operator==(const JSON& left, const JSON& right) {
    // Trees of unknown kind are compared by identity, but values of unknown kind are equal to nothing.
    return left.type() != JSON::Type::unknown && left.object_ == right.object_;
}

// frozen: F76
std::partial_ordering operator<=>(const JSON& left, const JSON& right) {
    const bool sameType = left.type() == right.type();
    if (sameType && left.type() == JSON::Type::number) return left.rawNumber().compare(right.rawNumber());
    if (sameType && left.type() == JSON::Type::string) return json::collate(*left.text(), *right.text());
    return left == right ? std::partial_ordering::equivalent : std::partial_ordering::unordered;
}

std::vector<std::byte> JSON::rawData(WritingOptions options) const {
    try {
        const std::string text = dataWithJSONObject(object(), options);
        const auto bytes = std::as_bytes(std::span(text));
        return {bytes.begin(), bytes.end()};
    } catch (const InvalidJSONObject&) {
        throw JSONException(makeJSONError(json::ErrorInvalidJSON, "JSON is invalid"));
    }
}

std::optional<std::string> JSON::rawString(json::TextEncoding encoding, WritingOptions options) const {
    if (type() == Type::unknown) return std::nullopt;
    if (type() == Type::null) return "null";
    if (!object_.isList() && !object_.isMap()) return stringValue();
    if (!isValidJSONObject(object_)) return std::nullopt;
    return json::decodedText(dataWithJSONObject(object_, options), encoding);
}

JSONIndex JSON::startIndex() const noexcept {
    return positionIn<JSONIndex>(object_, 0);
}

JSONIndex JSON::endIndex() const noexcept {
    return positionIn<JSONIndex>(object_, object_.size());
}

JSONRawIndex JSON::startRawIndex() const noexcept {
    return positionIn<JSONRawIndex>(object_, 0);
}

JSONRawIndex JSON::endRawIndex() const noexcept {
    return positionIn<JSONRawIndex>(object_, object_.size());
}

std::pair<std::string, const Tree> JSON::operator[](JSONRawIndex position) const {
    const std::size_t at = position.position();
    switch (position.kind()) {
        case JSONRawIndex::Case::array:
            require(object_.isList());
            return {std::to_string(at), object_.element(at)};
        case JSONRawIndex::Case::dictionary:
            require(object_.isMap());
            return {std::string(object_.keyAt(at)), object_.valueAt(at)};
        case JSONRawIndex::Case::null:
            require(!object_.isList() && !object_.isMap());
            return {std::string(), Tree()};
    }
    stopProcess();
}

std::pair<std::string, const JSON> JSON::operator[](JSONIndex position) const {
    const auto found = (*this)[JSONRawIndex(position)];
    return {found.first, JSON(found.second)};
}

}  // namespace kestrav
