#include "cli/NarrowHelp.h"

#include <sstream>
#include <string_view>

namespace kestrav {
namespace {

constexpr std::size_t kColumns = 80;
constexpr std::size_t kDescriptions = 24;  // the column where they begin

/// Takes from `rest` what fits on one line.
std::string_view takeLine(std::string_view& rest, std::size_t columns) {
    const std::size_t blank = rest.size() <= columns ? std::string_view::npos : rest.rfind(' ', columns);
    const std::string_view line = rest.substr(0, blank);
    rest = blank == std::string_view::npos ? std::string_view() : rest.substr(blank + 1);
    return line;
}

void putWrapped(std::ostream& out, std::string_view line) {
    const std::size_t indent = line.starts_with("  ") ? kDescriptions : 0;
    out << takeLine(line, kColumns) << '\n';
    while (!line.empty())
        out << std::string(indent, ' ') << takeLine(line, kColumns - indent) << '\n';
}

}  // namespace

NarrowHelp::NarrowHelp() {
    column_width(kDescriptions);
}

std::string NarrowHelp::make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const {
    std::istringstream text(Formatter::make_help(app, std::move(name), mode));
    std::ostringstream wrapped;
    for (std::string line; std::getline(text, line);)
        putWrapped(wrapped, line);
    return wrapped.str();
}

}  // namespace kestrav
