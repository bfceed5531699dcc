#include "services/asker/areAll.h"

#include <charconv>

namespace kestrav {

bool areAll(std::string_view field, uid_t uid) {
    int count = 0;
    while (!field.empty()) {
        const std::size_t start = field.find_first_not_of(" \t");
        if (start == std::string_view::npos) break;
        field.remove_prefix(start);
        uid_t one = 0;
        const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), one);
        if (error != std::errc() || one != uid) return false;
        field.remove_prefix(static_cast<std::size_t>(end - field.data()));
        ++count;
    }
    return count == 4;
}

}  // namespace kestrav
