#pragma once

#include <cstdint>
#include <optional>

namespace kestrav::json {

/// The kind of a JSON value. The raw values are part of the design.
enum class Type : std::uint8_t {
    number = 0,      ///< a number, from a document or a program
    string = 1,      ///< a text
    bool_ = 2,       ///< a boolean; the kind named bool, which is a keyword here
    array = 3,       ///< a list of values
    dictionary = 4,  ///< a map from texts to values
    null = 5,        ///< nothing, or the outcome of a lookup that found nothing
    unknown = 6,     ///< an object that JSON has no form for
};

/// The integer that stands for `type`.
constexpr std::int64_t rawValue(Type type) noexcept {
    return static_cast<std::int64_t>(type);
}

/// The type that `raw` stands for; nothing for an integer outside 0...6.
constexpr std::optional<Type> typeOfRawValue(std::int64_t raw) noexcept {
    if (raw < rawValue(Type::number) || raw > rawValue(Type::unknown)) return std::nullopt;
    return static_cast<Type>(raw);
}

}  // namespace kestrav::json
