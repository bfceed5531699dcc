#pragma once

#include <string>
#include <vector>

namespace kestrav {

/// Rows as lines of columns that stand below each other, two spaces apart; the first row is as a rule the headings.
/// Texts are UTF-8 and free of line ends; an empty one is shown as "-", so that columns can be told apart by programs.
std::string textTable(const std::vector<std::vector<std::string>>& rows);

}  // namespace kestrav
