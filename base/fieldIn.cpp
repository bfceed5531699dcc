#include "base/fieldIn.h"

#include <algorithm>

namespace kestrav {

std::string_view fieldIn(std::string_view text, std::string_view name) {
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (!line.starts_with(name)) continue;
        line.remove_prefix(name.size());
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        return line;
    }
    return {};
}

}  // namespace kestrav
