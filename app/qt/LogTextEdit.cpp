#include "app/qt/LogTextEdit.h"

#include <QContextMenuEvent>
#include <QEvent>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QShortcut>
#include <QTextBlock>
#include <algorithm>
#include <chrono>
#include <memory>

#include "app/LogText.h"
#include "app/qt/discernible.h"
#include "app/qt/saveTextAs.h"
#include "base/shownText.h"

namespace kestrav {
namespace {

using namespace std::chrono_literals;

/// A screen shows sixty pictures a second. Painting costs more than everything else about a line.
constexpr std::chrono::milliseconds kBetweenPaintings = 16ms;

QString fromUtf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// The picture of a character that must not have its effect.
QChar pictureOf(char32_t code) {
    if (code < 0x20) return QChar(static_cast<char16_t>(0x2400 + code));
    if (code == 0x7f) return QChar(u'\u2421');
    if (code == 0x2028 || code == 0x2029) return QChar(u'\u2424');
    return QChar(u'\u2426');  // the sign for something that is left out
}

/// One picture for one place, so that a place in the shown text is the same place in the content's line.
QString pictured(QString text) {
    for (qsizetype at = 0; at < text.size(); ++at) {
        const bool pair = at + 1 < text.size() && text[at].isHighSurrogate() && text[at + 1].isLowSurrogate();
        const char32_t code = pair ? QChar::surrogateToUcs4(text[at], text[at + 1]) : text[at].unicode();
        const qsizetype length = pair ? 2 : 1;
        if (code != '\t' && misleadsInALine(code)) std::fill_n(text.begin() + at, length, pictureOf(code));
        at += length - 1;
    }
    return text;
}

}  // namespace

LogTextEdit::LogTextEdit(QWidget* parent) : QPlainTextEdit(parent) {
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setUndoRedoEnabled(false);
    setTabChangesFocus(true);
    takeVisibleFrame();
    const auto* save = new QShortcut(QKeySequence::Save, this, nullptr, nullptr, Qt::WidgetShortcut);
    connect(save, &QShortcut::activated, this, &LogTextEdit::saveAs);
    nextPainting_.setSingleShot(true);
    nextPainting_.setTimerType(Qt::PreciseTimer);
    connect(&nextPainting_, &QTimer::timeout, this, &LogTextEdit::paintNow);
}

void LogTextEdit::resizeEvent(QResizeEvent* event) {
    QScrollBar& bar = *verticalScrollBar();
    const bool wasAtEnd = bar.value() == bar.maximum();
    QPlainTextEdit::resizeEvent(event);
    // What is said of an ending takes room, and the newest line has to be seen beside it.
    if (wasAtEnd) bar.setValue(bar.maximum());
}

void LogTextEdit::changeEvent(QEvent* event) {
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) takeVisibleFrame();
}

void LogTextEdit::takeVisibleFrame() {
    // One in the colour of text; the style's own is next to invisible there.
    setFrameStyle(isOfHighContrast(palette()) ? QFrame::Box | QFrame::Plain : QFrame::StyledPanel | QFrame::Sunken);
}

void LogTextEdit::append(std::string_view text) {
    appended_(text);
    paintSoon();
    QTextCursor end(document());
    end.movePosition(QTextCursor::End);
    end.beginEditBlock();
    while (!text.empty()) {
        const std::size_t lineEnd = text.find(kLogLineEnd);
        const std::string_view line = text.substr(0, lineEnd);
        end.insertText(pictured(fromUtf8(line)));
        content_ += line;
        text.remove_prefix(line.size());
        if (text.empty()) break;
        end.insertBlock();
        content_ += kLogLineEnd;
        text.remove_prefix(kLogLineEnd.size());
        lineStarts_.push_back(content_.size());
    }
    end.endEditBlock();
}

void LogTextEdit::scrollToEnd() {
    paintSoon();
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
    if (untilPainting() == 0ms) paintNow();
}

std::chrono::milliseconds LogTextEdit::untilPainting() const {
    if (!sincePainted_.isValid()) return 0ms;
    return std::max(0ms, kBetweenPaintings - std::chrono::milliseconds(sincePainted_.elapsed()));
}

/// Keeps back what the text's own changes ask for: a painting each.
void LogTextEdit::paintSoon() {
    viewport()->setUpdatesEnabled(false);
    if (!nextPainting_.isActive()) nextPainting_.start(untilPainting());
}

void LogTextEdit::paintNow() {
    nextPainting_.stop();
    viewport()->setUpdatesEnabled(true);
    viewport()->repaint();
    sincePainted_.start();
}

void LogTextEdit::saveAs() {
    saveTextAs(this, QStringLiteral("kestrav.log"), content_);
}

void LogTextEdit::contextMenuEvent(QContextMenuEvent* event) {
    QMenu menu(this);
    QAction* copyAction = menu.addAction(tr("&Copy"), QKeySequence::Copy, this, &LogTextEdit::copy);
    copyAction->setEnabled(textCursor().hasSelection());
    menu.addAction(tr("Select &All"), QKeySequence::SelectAll, this, &LogTextEdit::selectAll);
    menu.addSeparator();
    menu.addAction(tr("&Save As…"), QKeySequence::Save, this, &LogTextEdit::saveAs);
    menu.exec(event->globalPos());
}

QMimeData* LogTextEdit::createMimeDataFromSelection() const {
    const QTextCursor selection = textCursor();
    const QTextBlock first = document()->findBlock(selection.selectionStart());
    const QTextBlock last = document()->findBlock(selection.selectionEnd());
    QStringList lines;
    for (int line = first.blockNumber(); line <= last.blockNumber(); ++line) {
        lines.append(lineText(line));
    }
    // The last line is cut before the first one: if they are the same line, cutting its beginning moves its end.
    lines.last().truncate(selection.selectionEnd() - last.position());
    lines.first().remove(0, selection.selectionStart() - first.position());
    auto copied = std::make_unique<QMimeData>();
    copied->setText(lines.join(QString::fromLatin1(kLogLineEnd.data(), kLogLineEnd.size())));
    return copied.release();
}

QString LogTextEdit::lineText(int line) const {
    const auto index = static_cast<std::size_t>(line);
    const std::string_view content = content_;
    const std::size_t start = lineStarts_[index];
    if (index + 1 == lineStarts_.size()) return fromUtf8(content.substr(start));
    return fromUtf8(content.substr(start, lineStarts_[index + 1] - kLogLineEnd.size() - start));
}

}  // namespace kestrav
