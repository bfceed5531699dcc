#include "cli/textTable.h"

#include <algorithm>
#include <string_view>

namespace kestrav {
namespace {

// In characters; those that take two places on a terminal, or none, count as one.
std::size_t widthOf(std::string_view text) {
    const auto begins = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; };
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins));
}

std::string_view shown(const std::string& text) {
    return text.empty() ? std::string_view("-") : std::string_view(text);
}

}  // namespace

std::string textTable(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], widthOf(shown(row[column])));
    }
    std::string lines;
    for (const auto& row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            lines += shown(row[column]);
            const bool isLast = column + 1 == row.size();
            lines += isLast ? "\n" : std::string(widths[column] - widthOf(shown(row[column])) + 2, ' ');
        }
    }
    return lines;
}

}  // namespace kestrav
