#pragma once

#include <concepts>
#include <memory>
#include <string_view>

#include "json/tree/Tree.h"
#include "json/value/JSONNative.h"

namespace kestrav {

/// What a JSON value is made of as it stands: booleans, numbers, texts, trees, and objects that a tree can carry.
/// Characters and enumerations are left out: each would silently be a number.
template <class Object>
concept JSONObject =
    std::same_as<Object, bool> || JSONNative<Object> || std::same_as<Object, Number> || std::same_as<Object, Decimal> ||
    std::same_as<Object, Tree> || std::convertible_to<const Object&, std::string_view> ||
    std::convertible_to<const Object&, std::shared_ptr<const TreeObject>>;

}  // namespace kestrav
