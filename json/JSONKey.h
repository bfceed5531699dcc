#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <string_view>

#include "json/Tree.h"

namespace kestrav {

/// What addresses a member: the position in a list or the key in a map. A plain value.
class JSONKey {
  public:
    enum class Kind : std::uint8_t { index, key };

    static JSONKey index(std::int64_t index) { return JSONKey(Tree(index)); }
    static JSONKey key(std::string_view key) { return JSONKey(Tree(key)); }

    // Not explicit, so that a path may be written as {"list", 0}.
    // NOLINTBEGIN(google-explicit-constructor)
    template <std::integral Index>
    requires(!std::same_as<Index, bool>) JSONKey(Index position)
        : JSONKey(index(static_cast<std::int64_t>(position))) {}
    JSONKey(std::string_view name) : JSONKey(key(name)) {}
    JSONKey(const char* name) : JSONKey(key(name)) {}
    JSONKey(const std::string& name) : JSONKey(key(name)) {}
    // NOLINTEND(google-explicit-constructor)

    Kind kind() const noexcept { return value_.isText() ? Kind::key : Kind::index; }
    /// Nothing when it is of the other kind. The view lasts as long as this key.
    std::optional<std::int64_t> index() const noexcept;
    std::optional<std::string_view> key() const noexcept { return value_.text(); }

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
