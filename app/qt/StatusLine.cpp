#include "app/qt/StatusLine.h"

#include <QCoreApplication>
#include <QEvent>
#include <cmath>

namespace kestrav {

StatusLine::StatusLine(QWidget* parent) : QPlainTextEdit(parent) {
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setFrameShape(QFrame::NoFrame);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    takeWindowColours();
}

QSize StatusLine::sizeHint() const {
    // A little more than two lines, or the second one counts as not quite visible and brings a scroll bar up.
    const double margins = 2 * document()->documentMargin();
    return {QPlainTextEdit::minimumSizeHint().width(),
            static_cast<int>(std::ceil(2.25 * fontMetrics().lineSpacing() + margins))};
}

void StatusLine::changeEvent(QEvent* event) {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange) updateGeometry();
}

/// It is a part of the window and nothing to type into, so it looks like the window, in every theme.
void StatusLine::takeWindowColours() {
    viewport()->setAutoFillBackground(false);
    viewport()->setForegroundRole(QPalette::WindowText);
}

void StatusLineLog::write(std::string_view entry) {
    next_.write(entry);
    const QString text = QString::fromStdString(escapedForTerminal(entry));
    // The pointer is looked at on the main thread only, where the line lives and dies.
    QMetaObject::invokeMethod(QCoreApplication::instance(), [line = line_, text] {
        if (line) line->setPlainText(text);
    });
}

}  // namespace kestrav
