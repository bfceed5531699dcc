#pragma once

#include <QPlainTextEdit>
#include <QWidget>
#include <algorithm>

#include "app/qt/LogTextEdit.h"

namespace kestrav {

/// The log in a window that has one. It has no meta object, by which the toolkit would find it.
inline LogTextEdit& logEditOf(const QWidget& window) {
    const auto texts = window.findChildren<QPlainTextEdit*>();
    const auto isLog = [](const QPlainTextEdit* text) { return dynamic_cast<const LogTextEdit*>(text) != nullptr; };
    return *dynamic_cast<LogTextEdit*>(*std::ranges::find_if(texts, isLog));
}

}  // namespace kestrav
