#include "app/qt/StatusLine.h"

#include <QEvent>
#include <cmath>

#include "base/shownText.h"

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

void StatusLine::showSentence(std::string_view sentence) {
    setPlainText(QString::fromStdString(escapedForTerminal(sentence)));
}

QSize StatusLine::sizeHint() const {
    // Room for a little more than two lines: with exactly two, Qt shows a scroll bar.
    const double margins = 2 * document()->documentMargin();
    return {QPlainTextEdit::minimumSizeHint().width(),
            static_cast<int>(std::ceil(2.25 * fontMetrics().lineSpacing() + margins))};
}

void StatusLine::changeEvent(QEvent* event) {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::FontChange) updateGeometry();
}

/// Gives the line the window's colours, because nothing can be typed into it.
void StatusLine::takeWindowColours() {
    viewport()->setAutoFillBackground(false);
    viewport()->setForegroundRole(QPalette::WindowText);
}

}  // namespace kestrav
