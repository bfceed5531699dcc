#pragma once

#include <array>
#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "json/JSONError.h"
#include "json/JSONIndex.h"
#include "json/JSONKey.h"
#include "json/Reader.h"
#include "json/TextEncoding.h"
#include "json/Tree.h"
#include "json/Type.h"
#include "json/URL.h"
#include "json/Writer.h"
#include "json/pathLookup.h"

namespace kestrav {

/// The native types that a number is read as and stored from. The platform's integer and unsigned integer are the
/// 64-bit ones.
template <class Native>
concept JSONNative = std::same_as<Native, double> || std::same_as<Native, float> || std::same_as<Native, std::int8_t> ||
    std::same_as<Native, std::uint8_t> || std::same_as<Native, std::int16_t> || std::same_as<Native, std::uint16_t> ||
    std::same_as<Native, std::int32_t> || std::same_as<Native, std::uint32_t> || std::same_as<Native, std::int64_t> ||
    std::same_as<Native, std::uint64_t>;

/// A JSON value of some kind, or the error of the lookup that should have given one. Lookups never fail: what isn't
/// there is a null value with an error, a further lookup on it passes that error on, and so the first failure in a
/// chain is the one that its end reports.
///
/// A value type: copies share what lies below and are independent all the same (see Tree), also across threads.
/// Nothing here raises but rawData().
class JSON {
  public:
    /// Null, without an error.
    JSON() = default;
    /// Whatever a Tree can be made from: texts, numbers, booleans, trees. A text is taken as it is, not parsed.
    // NOLINTBEGIN(google-explicit-constructor): any object stands for the value made of it
    JSON(const Tree& object) : object_(object) {
        if (object_.isObject()) setUnsupported();
    }
    JSON(Tree&& object) : object_(std::move(object)) {
        if (object_.isObject()) setUnsupported();
    }
    template <class Object>
    requires std::constructible_from<Tree, const Object&> JSON(const Object& object) : JSON(Tree(object)) {}
    // NOLINTEND(google-explicit-constructor)
    explicit JSON(const std::vector<JSON>& elements);
    /// Reads a document. One that can't be read gives null, and tells why in `error` if that is given.
    explicit JSON(std::span<const std::byte> document, ReadingOptions options = ReadingOptions::allowFragments,
                  JSONError* error = nullptr);
    /// Reads the text of a document; any value may stand at its top. Null when it can't be read.
    static JSON parse(std::string_view document);

    /// What is held, as an object tree; null for kinds without content.
    Tree object() const;
    /// Replaces the whole value. Decides the kind; an object that JSON has no form for is `unknown`, with an error.
    void setObject(Tree object);

    Type type() const noexcept;
    std::optional<JSONError> error() const;
    /// False for what a lookup did not find.
    bool exists() const;

    /// The fields by kind. Only the one that matches type() is meaningful; the others keep what they last held.
    Tree rawArray() const { return type() == Type::array ? object_ : past().array; }
    Tree rawDictionary() const { return type() == Type::dictionary ? object_ : past().dictionary; }
    std::string rawString() const;
    Number rawNumber() const;
    Tree rawNull() const noexcept { return {}; }
    bool rawBool() const { return object_.boolean().value_or(past().boolean); }

    /// Lookups: the element of an array, the member of a dictionary, or step by step along a path.
    JSON operator[](const JSONKey& key) const { return (*this)[std::span(&key, 1)]; }
    JSON operator[](std::span<const JSONKey> path) const {
        const Tree* found = follow(&object_, path);
        return found != nullptr ? JSON(*found) : notFound(path);
    }
    JSON operator[](std::initializer_list<JSONKey> path) const { return (*this)[std::span(path.begin(), path.size())]; }
    template <JSONSubscriptType Key>
    JSON operator[](const Key& key) const {
        return (*this)[static_cast<const JSONKey&>(JSONKey(key))];
    }

    /// Puts `value` where `path` leads. An index outside its list, or a last key that doesn't suit the value that it is
    /// applied to, changes nothing; a key on the way that a dictionary lacks gets the member null. An empty path
    /// changes nothing.
    void assign(std::span<const JSONKey> path, const JSON& value);
    void assign(std::initializer_list<JSONKey> path, const JSON& value) {
        assign(std::span(path.begin(), path.size()), value);
    }

    /// The text when this is a string, without a copy; lasts until this value is changed.
    std::optional<std::string_view> text() const noexcept { return object_.text(); }

    /// Optional views: nothing when the value is not of a fitting kind.
    std::optional<bool> boolean() const;
    std::optional<std::string> string() const;
    std::optional<std::vector<JSON>> array() const;
    std::optional<Tree> arrayObject() const;
    std::optional<std::map<std::string, JSON>> dictionary() const;
    std::optional<Tree> dictionaryObject() const;
    std::optional<Number> number() const;
    /// The text with what a URL's query may not hold percent-encoded, if that is a URL.
    std::optional<URL> url() const;
    template <JSONNative Native>
    std::optional<Native> numberAs() const {
        const std::optional<Number> found = number();
        return found ? std::optional(converted<Native>(*found)) : std::nullopt;
    }

    /// Defaulting views: false, empty or zero when the value is not of a fitting kind.
    bool boolValue() const;
    std::string stringValue() const;
    std::vector<JSON> arrayValue() const { return array().value_or(std::vector<JSON>()); }
    std::map<std::string, JSON> dictionaryValue() const { return dictionary().value_or(std::map<std::string, JSON>()); }
    Number numberValue() const;
    /// See Number for what doesn't fit: integers keep their lowest bits, doubles stay within 64 bits.
    template <JSONNative Native>
    Native valueAs() const {
        return converted<Native>(numberValue());
    }

    /// Setters replace the whole value; nothing stands for null.
    void setBool(std::optional<bool> value) { setOrNull(value); }
    void setString(std::optional<std::string_view> value) { setOrNull(value); }
    void setArrayObject(std::optional<Tree> value) { setObject(std::move(value).value_or(Tree())); }
    void setDictionaryObject(std::optional<Tree> value) { setObject(std::move(value).value_or(Tree())); }
    void setNumber(std::optional<Number> value) { setOrNull(value); }
    void setURL(const std::optional<URL>& value);
    template <JSONNative Native>
    void setNumberAs(std::optional<Native> value) {
        setOrNull(value);
    }

    /// Comparison by kind; values of different kinds, and unknown ones, are neither equal nor in any order. Numbers
    /// compare exactly, texts by Unicode collation; the other kinds can only be equal.
    friend bool operator==(const JSON& left, const JSON& right);
    friend std::partial_ordering operator<=>(const JSON& left, const JSON& right);

    /// The bytes of the JSON text. Raises JSONException with ErrorInvalidJSON unless this is an array or dictionary
    /// that JSON can express.
    std::vector<std::byte> rawData(WritingOptions options = WritingOptions::none) const;
    /// The value as text, of an array or dictionary its JSON. Nothing when it has none in that encoding.
    std::optional<std::string> rawString(TextEncoding encoding, WritingOptions options = WritingOptions::none) const;

    /// Positions, from the first to the one behind the last. A value that is neither array nor dictionary has only the
    /// position `null`, which is both.
    JSONIndex startIndex() const noexcept;
    JSONIndex endIndex() const noexcept;
    JSONRawIndex startRawIndex() const noexcept;
    JSONRawIndex endRawIndex() const noexcept;
    /// The member there with its key; of an array the key is the position in decimal. At `null`, an empty key and null.
    /// Stops the process at a position that isn't one of this value.
    std::pair<std::string, JSON> operator[](JSONIndex position) const;
    std::pair<std::string, Tree> operator[](JSONRawIndex position) const;

    /// Walks the members by those positions. The value must outlive the walk unchanged.
    class Iterator;
    Iterator begin() const;
    Iterator end() const;

  private:
    /// What the fields of other kinds last held, and the error. Apart, because most values have neither: they are a
    /// tree and a null pointer.
    struct Rest {
        Tree array = Tree::list();
        Tree dictionary = Tree::map();
        Tree string;
        Tree number;
        bool boolean = false;
        std::optional<JSONError> error;
    };

    /// What the path leads to when it is empty or leads nowhere.
    JSON notFound(std::span<const JSONKey> path) const;
    JSON failed(const JSONKey& key) const;
    bool isContainer() const noexcept { return object_.isList() || object_.isMap(); }
    const Rest& past() const noexcept;
    void putPast();
    void setError(JSONError error);
    void setUnsupported();

    template <class Value>
    void setOrNull(const std::optional<Value>& value) {
        setObject(value ? Tree(*value) : Tree());
    }
    template <JSONNative Native>
    static Native converted(const Number& number);

    Tree object_;
    std::shared_ptr<const Rest> rest_;
};

class JSON::Iterator {
  public:
    using value_type = std::pair<std::string, JSON>;
    using difference_type = std::ptrdiff_t;

    Iterator(const JSON& value, JSONIndex position) noexcept : value_(&value), position_(position) {}

    value_type operator*() const { return (*value_)[position_]; }
    Iterator& operator++() noexcept {
        position_ = position_.next();
        return *this;
    }
    Iterator operator++(int) noexcept {
        const Iterator before = *this;
        ++*this;
        return before;
    }
    JSONIndex index() const noexcept { return position_; }
    friend bool operator==(const Iterator& left, const Iterator& right) noexcept {
        return left.position_ == right.position_;
    }

  private:
    const JSON* value_;
    JSONIndex position_;
};

inline Type JSON::type() const noexcept {
    switch (object_.kind()) {
        case Tree::Kind::null:
            return Type::null;
        case Tree::Kind::boolean:
            return Type::bool_;
        case Tree::Kind::number:
            return Type::number;
        case Tree::Kind::text:
            return Type::string;
        case Tree::Kind::list:
            return Type::array;
        case Tree::Kind::map:
            return Type::dictionary;
        case Tree::Kind::object:
            return Type::unknown;
    }
    return Type::unknown;
}

template <JSONNative Native>
Native JSON::converted(const Number& number) {
    if constexpr (std::same_as<Native, double>)
        return number.doubleValue();
    else if constexpr (std::same_as<Native, float>)
        return number.floatValue();
    else if constexpr (std::same_as<Native, std::int8_t>)
        return number.charValue();
    else if constexpr (std::same_as<Native, std::uint8_t>)
        return number.unsignedCharValue();
    else if constexpr (std::same_as<Native, std::int16_t>)
        return number.shortValue();
    else if constexpr (std::same_as<Native, std::uint16_t>)
        return number.unsignedShortValue();
    else if constexpr (std::same_as<Native, std::int32_t>)
        return number.intValue();
    else if constexpr (std::same_as<Native, std::uint32_t>)
        return number.unsignedIntValue();
    else if constexpr (std::same_as<Native, std::int64_t>)
        return number.longLongValue();
    else
        return number.unsignedLongLongValue();
}

}  // namespace kestrav
