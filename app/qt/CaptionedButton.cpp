#include "app/qt/CaptionedButton.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>

#include "app/qt/discernible.h"

namespace kestrav {

CaptionedButton::CaptionedButton(const QString& text, QWidget* parent) : QPushButton(text, parent) {
    keepCaptionReadable();
}

void CaptionedButton::changeEvent(QEvent* event) {
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) keepCaptionReadable();
}

void CaptionedButton::paintEvent(QPaintEvent* event) {
    QPushButton::paintEvent(event);
    if (!isOfHighContrast(palette())) return;
    QPainter painter(this);
    painter.setPen(QPen(palette().color(QPalette::ButtonText), 1));
    painter.drawRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5));
}

/// Only the one colour is this button's own; the others stay the theme's, also of the next one.
void CaptionedButton::keepCaptionReadable() {
    const QPalette themes = QApplication::palette(this);
    const QColor caption =
        discernible(themes.color(QPalette::Disabled, QPalette::ButtonText),
                    themes.color(QPalette::Disabled, QPalette::Button), themes.color(QPalette::ButtonText));
    if (palette().color(QPalette::Disabled, QPalette::ButtonText) == caption) return;
    QPalette own;
    own.setColor(QPalette::Disabled, QPalette::ButtonText, caption);
    setPalette(own);
}

}  // namespace kestrav
