#include "json/value/JSONKey.h"

#include <algorithm>
#include <limits>

namespace kestrav {

std::optional<std::int64_t> JSONKey::index() const noexcept {
    const std::optional<Number> position = value_.number();
    if (!position) return std::nullopt;
    if (position->kind() == Number::Kind::integer) return position->integer();
    constexpr std::uint64_t kHighest = std::numeric_limits<std::int64_t>::max();
    return static_cast<std::int64_t>(std::min(position->unsignedInteger(), kHighest));
}

}  // namespace kestrav
