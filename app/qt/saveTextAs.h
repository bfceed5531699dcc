#pragma once

#include <QString>
#include <string_view>

class QWidget;

namespace kestrav {

/// False when the file can't be written; then an earlier one of that name is as it was.
bool writeTextFile(const QString& path, std::string_view text);

/// Asks for a file's name, beginning with `name`, and writes the text into it; says so when that can't be done.
void saveTextAs(QWidget* parent, const QString& name, std::string_view text);

}  // namespace kestrav
