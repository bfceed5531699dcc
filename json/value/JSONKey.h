#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "json/tree/Tree.h"
#include "json/value/JSONInteger.h"

namespace kestrav {

/// What addresses a member: the position in a list or the key in a map. A plain value.
class JSONKey {
  public:
    /// Which of the two it is.
    enum class Kind : std::uint8_t {
        index,  ///< a position in a list
        key,    ///< the key of a member
    };

    /// A position, counted from 0. A negative one is outside every list.
    static JSONKey index(std::int64_t index) noexcept { return JSONKey(Tree(index)); }
    /// The key of a member.
    static JSONKey key(std::string_view key) { return JSONKey(Tree(key)); }

    // Not explicit, so that a path may be written as {"list", 0}.
    // NOLINTBEGIN(google-explicit-constructor)
    /// A position of any integer type. A character is none: value['a'] does not mean value[97].
    template <JSONInteger Index>
    JSONKey(Index position) noexcept : value_(position) {}
    /// The key of a member.
    JSONKey(std::string_view name) : JSONKey(key(name)) {}
    /// The key of a member; a null pointer is the empty key.
    JSONKey(const char* name) : JSONKey(name == nullptr ? std::string_view() : std::string_view(name)) {}
    /// The key of a member.
    JSONKey(const std::string& name) : JSONKey(key(name)) {}
    /// Neither a position nor a key.
    JSONKey(std::nullptr_t) = delete;
    // NOLINTEND(google-explicit-constructor)

    /// Whether it is a position or the key of a member.
    Kind kind() const noexcept { return value_.isText() ? Kind::key : Kind::index; }
    /// The position; nothing when it is a key. A position beyond 63 bits, where no list reaches, is given as 2^63-1.
    std::optional<std::int64_t> index() const noexcept;
    /// The key; nothing when it is a position. The view lasts as long as this key.
    std::optional<std::string_view> key() const noexcept { return value_.text(); }

    /// The same position or the same key.
    friend bool operator==(const JSONKey& left, const JSONKey& right) { return left.value_ == right.value_; }

    /// An integer or a text, to be compared with the keys of a map as it stands.
    const Tree& object() const noexcept { return value_; }

  private:
    explicit JSONKey(Tree value) noexcept : value_(std::move(value)) {}

    Tree value_;
};

/// What can address a member: integers, texts, and keys.
template <class Subscript>
concept JSONSubscriptType = std::convertible_to<const Subscript&, JSONKey>;

}  // namespace kestrav
