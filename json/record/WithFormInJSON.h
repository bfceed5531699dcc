#pragma once

#include <concepts>
#include <memory>
#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>

#include "json/tree/Tree.h"

/// What a field of a record can be: the sorts that the conversion tells apart, and the one that takes them all.
namespace kestrav::record {

/// A text.
template <class Value>
concept Text = std::convertible_to<const Value&, std::string_view>;

/// What has keys and values, whatever the keys are.
template <class Value>
concept Keyed = requires {
    typename Value::key_type;
    typename Value::mapped_type;
};

/// A map with texts for keys.
template <class Value>
concept Map = Keyed<Value> && requires(const Value& value) {
    { value.begin()->first } -> std::convertible_to<std::string_view>;
};

/// A list of any container type.
template <class Value>
concept List = !Text<Value> && !Keyed<Value> && requires(const Value& value) {
    typename Value::value_type;
    value.begin();
    value.end();
};

/// A class instance that a tree can carry.
template <class Value>
concept Instance = std::convertible_to<const Value&, std::shared_ptr<const TreeObject>>;

/// What the language counts among the integers and people don't.
template <class Value>
concept Character = std::same_as<Value, char> || std::same_as<Value, wchar_t> || std::same_as<Value, char8_t> ||
    std::same_as<Value, char16_t> || std::same_as<Value, char32_t>;

/// What is an object of the tree already or becomes one by itself.
template <class Value>
concept Object = Text<Value> ||(std::is_arithmetic_v<Value> && !Character<Value>) || std::same_as<Value, Number> ||
                 std::same_as<Value, Tree> || Instance<Value>;

/// Whether a type only holds other values, which the conversion does not look for there.
template <class Value>
inline constexpr bool kIsHolder = false;
template <class Value>
inline constexpr bool kIsHolder<std::optional<Value>> = true;
template <class Value>
inline constexpr bool kIsHolder<std::shared_ptr<Value>> = true;
template <class Value>
inline constexpr bool kIsHolder<std::weak_ptr<Value>> = true;
template <class Value, class Deleter>
inline constexpr bool kIsHolder<std::unique_ptr<Value, Deleter>> = true;
template <class... Values>
inline constexpr bool kIsHolder<std::variant<Values...>> = true;
template <class... Values>
inline constexpr bool kIsHolder<std::tuple<Values...>> = true;
template <class First, class Second>
inline constexpr bool kIsHolder<std::pair<First, Second>> = true;

/// Whether a field or an element may be of that type. Whatever would get lost, or become something else, may not: an
/// enumeration, a character, a pointer or array of the language, what merely holds a value, a map whose keys are no
/// texts. A class that is none of the above may: as a field it is left out, as an element it is carried as it is.
template <class Value>
constexpr bool isConvertible() {
    if constexpr (Object<Value>)
        return true;
    else if constexpr (Map<Value>)
        return isConvertible<typename Value::mapped_type>();
    else if constexpr (List<Value>)
        return isConvertible<typename Value::value_type>();
    else
        return std::is_class_v<Value> && !Keyed<Value> && !kIsHolder<Value>;
}

/// What a field of a record may be.
template <class Value>
concept WithFormInJSON = isConvertible<Value>();

}  // namespace kestrav::record
