#include "app/qt/WrappedLabel.h"

namespace kestrav {

WrappedLabel::WrappedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
}

QSize WrappedLabel::minimumSizeHint() const {
    constexpr int kFewestLetters = 16;
    return {fontMetrics().averageCharWidth() * kFewestLetters, fontMetrics().lineSpacing()};
}

}  // namespace kestrav
