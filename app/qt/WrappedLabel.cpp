#include "app/qt/WrappedLabel.h"

namespace kestrav {
namespace {

/// A window that is being resized asks for every width on its way.
constexpr qsizetype kMostHeights = 64;

}  // namespace

WrappedLabel::WrappedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
}

QSize WrappedLabel::minimumSizeHint() const {
    constexpr int kFewestLetters = 16;
    return {fontMetrics().averageCharWidth() * kFewestLetters, fontMetrics().lineSpacing()};
}

int WrappedLabel::heightForWidth(int width) const {
    if (measured_ != text() || heights_.size() >= kMostHeights) {
        heights_.clear();
        measured_ = text();
    }
    const auto known = heights_.constFind(width);
    if (known != heights_.constEnd()) return *known;
    return *heights_.insert(width, QLabel::heightForWidth(width));
}

/// Fonts, styles and directions are such changes.
void WrappedLabel::changeEvent(QEvent* event) {
    heights_.clear();
    QLabel::changeEvent(event);
}

}  // namespace kestrav
