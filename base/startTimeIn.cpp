#include "base/startTimeIn.h"

#include <charconv>

namespace kestrav {

std::optional<std::uint64_t> startTimeIn(std::string_view stat) {
    std::size_t at = stat.rfind(')');
    for (int field = 2; field < 22 && at != std::string_view::npos; ++field)
        at = stat.find(' ', at + 1);
    if (at == std::string_view::npos) return std::nullopt;
    const std::string_view rest = stat.substr(at + 1);
    std::uint64_t time = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), time);
    if (error != std::errc()) return std::nullopt;
    return time;
}

}  // namespace kestrav
