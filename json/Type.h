#pragma once

#include <cstdint>
#include <optional>

namespace kestrav {

/// The kind of a JSON value. The raw values are part of the design; `bool_` stands for the kind named bool.
enum class Type : std::uint8_t { number = 0, string = 1, bool_ = 2, array = 3, dictionary = 4, null = 5, unknown = 6 };

constexpr std::int64_t rawValue(Type type) noexcept {
    return static_cast<std::int64_t>(type);
}

/// Nothing for an integer outside 0...6.
constexpr std::optional<Type> typeOfRawValue(std::int64_t raw) noexcept {
    if (raw < rawValue(Type::number) || raw > rawValue(Type::unknown)) return std::nullopt;
    return static_cast<Type>(raw);
}

}  // namespace kestrav
