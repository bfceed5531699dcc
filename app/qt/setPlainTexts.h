#pragma once

#include <QString>

class QMessageBox;

namespace kestrav {

/// Gives the message its text and what stands below it, both as they are: a path may look like markup, and so may what
/// comes from outside.
void setPlainTexts(QMessageBox& box, const QString& text, const QString& more = {});

}  // namespace kestrav
