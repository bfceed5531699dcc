#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace kestrav {

inline std::vector<std::byte> bytes(std::string_view text) {
    const auto* first = reinterpret_cast<const std::byte*>(text.data());
    return {first, first + text.size()};
}

}  // namespace kestrav
