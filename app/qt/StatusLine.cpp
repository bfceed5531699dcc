#include "app/qt/StatusLine.h"

#include <QEvent>
#include <algorithm>
#include <cmath>
#include <utility>

#include "base/shownText.h"

namespace kestrav {
namespace {

constexpr int kMostLines = 2;

}  // namespace

StatusLine::StatusLine(QWidget* parent) : QPlainTextEdit(parent) {
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    setFrameShape(QFrame::NoFrame);
    document()->setDocumentMargin(2);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    takeWindowColours();
    connect(this, &QPlainTextEdit::textChanged, this, &StatusLine::countLines);
}

void StatusLine::showSentence(std::string_view sentence) {
    setPlainText(QString::fromStdString(escapedForTerminal(sentence)));
}

QSize StatusLine::sizeHint() const {
    // A quarter of a line more than there are: with exactly their room Qt shows a scroll bar.
    const double margins = 2 * document()->documentMargin();
    return {QPlainTextEdit::minimumSizeHint().width(),
            static_cast<int>(std::ceil((lines_ + 0.25) * fontMetrics().lineSpacing() + margins))};
}

void StatusLine::resizeEvent(QResizeEvent* event) {
    QPlainTextEdit::resizeEvent(event);
    countLines();
}

void StatusLine::countLines() {
    // The height of a plain text is counted in lines.
    const int lines = std::clamp(static_cast<int>(document()->size().height()), 1, kMostLines);
    if (std::exchange(lines_, lines) != lines) updateGeometry();
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
