#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "json/tree/Tree.h"
#include "json/tree/dataWithJSONObject.h"
#include "json/tree/readJSON.h"
#include "json/value/JSONError.h"
#include "json/value/JSONException.h"
#include "json/value/JSONIndex.h"
#include "json/value/JSONIterator.h"
#include "json/value/JSONKey.h"
#include "json/value/JSONNative.h"
#include "json/value/JSONObject.h"
#include "json/value/TextEncoding.h"
#include "json/value/Type.h"
#include "json/value/URL.h"
#include "json/value/findByPath.h"

namespace kestrav {

class JSONEditor;

/// A JSON value of some kind, or the error of the lookup that should have given one. Lookups never fail: what isn't
/// there is a null value with an error, a further lookup on it passes that error on, and so the first failure in a
/// chain is the one that its end reports.
///
/// A value type: copies share what lies below and are independent all the same (see Tree), also across threads. A
/// lookup gives such a copy, so what is done to it is not done to the value that it came from; to keep that from being
/// forgotten, nothing can be assigned to a value that has no name, nor set in it. To change a value in place:
///
///     json.at({"list", 0}).set("x")      // there and nowhere else; see JSONEditor
///     json.append(5)                     // when the value itself is the list
///
/// Nothing here raises but rawData(), and std::bad_alloc where memory is used up; a change that raises it has not
/// happened.
class JSON {
  public:
    /// The kind of a value.
    using Type = json::Type;

    /// Null, without an error.
    JSON() noexcept = default;
    // NOLINTBEGIN(google-explicit-constructor): any object stands for the value made of it
    /// Null.
    JSON(std::nullptr_t) noexcept {}
    /// What the tree holds.
    JSON(const Tree& object) : object_(object) {
        if (object_.isObject()) setUnsupported();
    }
    /// What the tree holds.
    JSON(Tree&& object) : object_(std::move(object)) {
        if (object_.isObject()) setUnsupported();
    }
    /// The text as it is, not parsed; null of a null pointer.
    JSON(const char* text) : JSON(text == nullptr ? Tree() : Tree(text)) {}
    /// Whatever a Tree can be made from. A text is taken as it is, not parsed.
    template <JSONObject Object>
    JSON(const Object& object) : JSON(Tree(object)) {}
    // NOLINTEND(google-explicit-constructor)
    /// The list of the elements' objects.
    explicit JSON(const std::vector<JSON>& elements);
    /// Reads a document. One that can't be read gives null, and tells why and where in `error` if that is given.
    explicit JSON(std::span<const std::byte> document, ReadingOptions options = ReadingOptions::allowFragments,
                  JSONError* error = nullptr);
    /// Reads the text of a document; any value may stand at its top. Null when it can't be read: who has to tell that
    /// from the document "null" gives `error`, which then says why, and at which byte, line and column. A document that
    /// can be read leaves `error` as it was.
    static JSON parse(std::string_view document, JSONError* error = nullptr);

    /// Copies share what lies below, and are independent all the same.
    JSON(const JSON& other) : object_(other.object_) {
        if (!other.isBorrowed()) past_ = other.past_;
    }
    JSON(JSON&&) noexcept = default;
    ~JSON() {
        if (isBorrowed()) static_cast<void>(TreeNodes::give(std::move(object_)));
    }
    /// Only a value that lasts can be assigned to: json["a"] = 5 would change a copy, and does not compile.
    JSON& operator=(const JSON& other) & { return *this = JSON(other); }
    /// The same for a value that is moved.
    JSON& operator=(JSON&&) & noexcept = default;

    /// What is held, as an object tree; null for kinds without content.
    Tree object() const { return object_.isObject() ? Tree() : object_; }
    /// Replaces the whole value. Decides the kind; an object that JSON has no form for is `unknown`, with an error.
    void setObject(Tree object) &;

    /// The current kind.
    Type type() const noexcept { return kTypes[static_cast<std::size_t>(TreeNodes::form(object_))]; }
    /// The error of the lookup that found nothing, or of the object that could not be taken.
    std::optional<JSONError> error() const { return past().error; }
    /// False for what a lookup did not find.
    bool exists() const noexcept;

    /// The fields by kind. Only the one that matches type() is meaningful; the others keep what they last held.
    /// rawString() without an encoding is such a field: the text of a string as it stands, and of any other kind the
    /// one that was last held. The text that stands for a value of any kind is rawString(encoding), below: its result
    /// is optional, so that the one can't be taken for the other.
    Tree rawArray() const { return type() == Type::array ? object_ : past().array; }
    Tree rawDictionary() const { return type() == Type::dictionary ? object_ : past().dictionary; }
    std::string rawString() const;
    Number rawNumber() const;
    Tree rawNull() const noexcept { return {}; }
    bool rawBool() const { return object_.boolean().value_or(past().boolean); }

    /// Lookups. The element of an array, the member of a dictionary, or what a path leads to step by step.
    template <JSONSubscriptType Key>
    JSON operator[](const Key& key) const {
        const Tree* found = find(key);
        return found != nullptr ? JSON(*found) : notFound(key);
    }
    JSON operator[](std::span<const JSONKey> path) const {
        const Tree* found = findByPath(&object_, path);
        return found != nullptr ? JSON(*found) : notFoundAlong(path);
    }
    JSON operator[](std::initializer_list<JSONKey> path) const { return (*this)[std::span(path.begin(), path.size())]; }

    /// Changes in place. The place of a member at any depth, and the same changes for the value itself: see JSONEditor,
    /// which says when they give false and change nothing.
    JSONEditor at(std::span<const JSONKey> path) &;
    JSONEditor at(std::initializer_list<JSONKey> path) &;
    [[nodiscard]] bool append(JSON value) &;
    [[nodiscard]] bool insert(std::size_t index, JSON value) &;
    [[nodiscard]] bool remove(const JSONKey& key) &;

    /// Assigning through a path. Puts `value` where `path` leads. An index outside its list, or a last key that doesn't
    /// suit the value that it is applied to, changes nothing; a key on the way that a dictionary lacks gets the member
    /// null. An empty path changes nothing. at() tells whether it did what was asked.
    void assign(std::span<const JSONKey> path, const JSON& value) &;
    void assign(std::initializer_list<JSONKey> path, const JSON& value) &;

    /// The text when this is a string, without a copy; lasts until this value is changed.
    std::optional<std::string_view> text() const& noexcept { return object_.text(); }
    /// Nothing would hold the text of a value that has no name.
    std::optional<std::string_view> text() const&& = delete;

    /// Optional views. Nothing when the value is not of a fitting kind. A URL is the text with what a URL's query may
    /// not hold percent-encoded, if that is one. The views of lists and maps are copies, and constant as they are
    /// given, so that json.arrayValue()[0] = 5, which would change a copy and nothing else, does not compile; whoever
    /// keeps one in a variable may change it.
    std::optional<bool> boolean() const { return object_.boolean(); }
    std::optional<std::string> string() const;
    const std::optional<std::vector<JSON>> array() const;
    const std::optional<Tree> arrayObject() const;
    const std::optional<std::map<std::string, JSON>> dictionary() const;
    const std::optional<Tree> dictionaryObject() const;
    std::optional<Number> number() const;
    std::optional<json::URL> url() const;
    template <JSONNative Native>
    std::optional<Native> numberAs() const {
        const std::optional<Number> found = number();
        return found ? std::optional(nativeValue<Native>(*found)) : std::nullopt;
    }

    /// Defaulting views. False, empty or zero when the value is not of a fitting kind. valueAs() converts as
    /// nativeValue() does.
    bool boolValue() const;
    std::string stringValue() const;
    const std::vector<JSON> arrayValue() const;
    const std::map<std::string, JSON> dictionaryValue() const;
    Number numberValue() const;
    template <JSONNative Native>
    Native valueAs() const {
        // Most numbers are integers, and those are in place.
        if constexpr (JSONInteger<Native>) {
            if (TreeNodes::isInteger(object_)) return static_cast<Native>(TreeNodes::words(object_).payload);
        }
        return nativeValue<Native>(numberValue());
    }

    /// Setters. Each replaces the whole value; nothing stands for null.
    void setBool(std::optional<bool> value) & { setOrNull(value); }
    void setString(std::optional<std::string_view> value) & { setOrNull(value); }
    void setString(std::nullptr_t) & = delete;
    void setArrayObject(std::optional<Tree> value) & { setObject(std::move(value).value_or(Tree())); }
    void setDictionaryObject(std::optional<Tree> value) & { setObject(std::move(value).value_or(Tree())); }
    void setNumber(std::optional<Number> value) & { setOrNull(value); }
    void setURL(const std::optional<json::URL>& value) &;
    template <JSONNative Native>
    void setNumberAs(std::optional<Native> value) & {
        setOrNull(value);
    }

    /// Comparison. By kind; values of different kinds, and unknown ones, are neither equal nor in any order. Numbers
    /// compare exactly, texts by Unicode collation; the other kinds can only be equal.
    friend bool operator==(const JSON& left, const JSON& right);
    friend std::partial_ordering operator<=>(const JSON& left, const JSON& right);

    /// The bytes of the JSON text. Raises JSONException with ErrorInvalidJSON unless this is an array or dictionary
    /// that JSON can express.
    std::vector<std::byte> rawData(WritingOptions options = WritingOptions::none) const;
    /// The value as text: of an array or dictionary its JSON, of a string that string as it stands, without quotes.
    /// Nothing when it has no text in that encoding.
    std::optional<std::string> rawString(json::TextEncoding encoding,
                                         WritingOptions options = WritingOptions::none) const;

    /// Positions. From the first to the one behind the last. A value that is neither array nor dictionary has only the
    /// position `null`, which is both. What stands at a position comes with its key, of an array the position in
    /// decimal; at `null` these are empty and null. A position that isn't one of this value stops the process.
    JSONIndex startIndex() const noexcept;
    JSONIndex endIndex() const noexcept;
    JSONRawIndex startRawIndex() const noexcept;
    JSONRawIndex endRawIndex() const noexcept;
    std::pair<std::string, const JSON> operator[](JSONIndex position) const;
    std::pair<std::string, const Tree> operator[](JSONRawIndex position) const;

    /// Walks the members of a value.
    using Iterator = JSONIterator<JSON>;
    /// Walking. The members with their keys: for (const auto& [key, member] : json). The value must outlive the walk
    /// unchanged.
    Iterator begin() const& noexcept { return Iterator::first(object_); }
    Iterator end() const& noexcept { return Iterator::behind(object_); }

  private:
    friend class JSONEditor;
    friend class JSONIterator<JSON>;

    /// What the fields of other kinds last held, and the error. Apart, because most values have neither: they are a
    /// tree and a null pointer.
    struct Past {
        Tree array = Tree::list();
        Tree dictionary = Tree::map();
        Tree string;
        Tree number;
        bool boolean = false;
        std::optional<JSONError> error;
    };

    /// What a walk shows of a tree that outlives the look at it: the same two words, of which no reference is counted.
    /// Only ever constant, so that nothing but its end and copies, which count theirs, are to be thought of.
    static JSON borrowed(const Tree& object) {
        if (object.isObject()) return JSON(object);
        return JSON(TreeNodes::adopt(TreeNodes::words(object)), Borrowed());
    }
    struct Borrowed {};
    JSON(Tree&& words, Borrowed /*tag*/)
    noexcept : object_(std::move(words)),
               past_(std::shared_ptr<const Past>(), markOfBorrowed()) {}
    bool isBorrowed() const noexcept { return past_.get() == markOfBorrowed(); }
    /// An address that no past has; nobody looks at what stands there.
    static const Past* markOfBorrowed() noexcept { return reinterpret_cast<const Past*>(&kMark); }
    static constexpr std::uint64_t kMark = 0;

    /// The kind of each form of a tree: what Tree::kind() would say, in one step.
    static constexpr Type kTypes[16] = {Type::null,   Type::bool_,      Type::number, Type::number, Type::number,
                                        Type::string, Type::null,       Type::null,   Type::number, Type::string,
                                        Type::array,  Type::dictionary, Type::unknown};

    std::vector<JSON> elements() const;
    std::map<std::string, JSON> members() const;
    template <class Key>
    const Tree* find(const Key& key) const noexcept {
        if constexpr (std::convertible_to<const Key&, std::string_view>)
            return findByName(object_, key);
        else if constexpr (JSONInteger<Key>)
            return findByPosition(object_, static_cast<std::uint64_t>(key));
        else
            return findByKey(object_, key);
    }
    [[gnu::cold]] JSON notFound(const JSONKey& key) const;
    [[gnu::cold]] JSON notFoundAlong(std::span<const JSONKey> path) const;
    const Past& past() const noexcept;
    std::shared_ptr<const Past> pastWith(const Tree& next) const;
    [[gnu::cold]] void setUnsupported();
    Tree takeObject() && { return object_.isObject() ? Tree() : std::move(object_); }

    template <class Value>
    void setOrNull(const std::optional<Value>& value) {
        setObject(value ? Tree(*value) : Tree());
    }

    Tree object_;
    std::shared_ptr<const Past> past_;
};

}  // namespace kestrav
