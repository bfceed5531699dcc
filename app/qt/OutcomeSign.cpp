#include "app/qt/OutcomeSign.h"

#include <QPainter>
#include <QPainterPath>
#include <cmath>
#include <numbers>

#include "base/stopProcess.h"

namespace kestrav {
namespace {

/// A path of straight lines through points of a square with sides of 24.
QPainterPath lines(std::initializer_list<QPointF> points, bool closed) {
    QPainterPath path;
    for (const QPointF& point : points)
        path.elementCount() == 0 ? path.moveTo(point) : path.lineTo(point);
    if (closed) path.closeSubpath();
    return path;
}

QPainterPath disc() {
    QPainterPath path;
    path.addEllipse(QRectF(2, 2, 20, 20));
    return path;
}

QPainterPath octagon() {
    return lines({{8, 2}, {16, 2}, {22, 8}, {22, 16}, {16, 22}, {8, 22}, {2, 16}, {2, 8}}, true);
}

QPainterPath triangle() {
    return lines({{12, 2}, {23, 22}, {1, 22}}, true);
}

void drawDots(QPainter& painter, const QColor& colour) {
    constexpr int kDots = 8;
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    for (int dot = 0; dot < kDots; ++dot) {
        const double angle = 2 * std::numbers::pi * dot / kDots;
        painter.drawEllipse(QPointF(12 + 8 * std::cos(angle), 12 + 8 * std::sin(angle)), 1.8, 1.8);
    }
}

/// Of lines, for it is in the first picture of the window: a letter would have one more font loaded for it.
void drawI(QPainter& painter, const QColor& colour) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawEllipse(QPointF(12, 7.5), 1.5, 1.5);
    painter.drawRoundedRect(QRectF(10.75, 10.5, 2.5, 7), 0.75, 0.75);
}

/// A question mark of the window's own font, as low in the square as a triangle has room.
void drawQuestionMark(QPainter& painter, const QColor& colour) {
    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(14);
    painter.setFont(font);
    painter.setPen(colour);
    painter.drawText(QRectF(0, 3, 24, 24), Qt::AlignCenter, QChar('?'));
}

}  // namespace

OutcomeSign::OutcomeSign(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void OutcomeSign::setKind(Kind kind) {
    kind_ = kind;
    update();
}

QColor OutcomeSign::colourOf(Kind kind, const QPalette& palette) {
    const bool isDark = palette.color(QPalette::Window).lightness() < 128;
    switch (kind) {
        case Kind::ready:
        case Kind::working:
            return palette.color(QPalette::WindowText);
        case Kind::success:
            return isDark ? QColor(0x57, 0xc7, 0x7a) : QColor(0x1b, 0x7a, 0x3a);
        case Kind::notWritten:
            return isDark ? QColor(0xff, 0x7b, 0x72) : QColor(0xb3, 0x26, 0x1e);
        case Kind::nobodyKnows:
            return isDark ? QColor(0xf2, 0xb8, 0x4b) : QColor(0x8a, 0x5a, 0x00);
    }
    stopProcess();
}

QSize OutcomeSign::sizeHint() const {
    const int side = fontMetrics().height() * 2;
    return {side, side};
}

void OutcomeSign::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double side = std::min(width(), height());
    painter.translate((width() - side) / 2, (height() - side) / 2);
    painter.scale(side / 24, side / 24);
    const QColor colour = colourOf(kind_, palette());
    const QColor within = palette().color(QPalette::Window);
    switch (kind_) {
        case Kind::ready:
            painter.strokePath(disc(), QPen(colour, 1.5));
            return drawI(painter, colour);
        case Kind::working:
            return drawDots(painter, colour);
        case Kind::success:
            painter.fillPath(disc(), colour);
            return painter.strokePath(lines({{7, 12.5}, {10.5, 16}, {17, 8.5}}, false), QPen(within, 2.5));
        case Kind::notWritten:
            painter.fillPath(octagon(), colour);
            painter.strokePath(lines({{8, 8}, {16, 16}}, false), QPen(within, 2.5));
            return painter.strokePath(lines({{16, 8}, {8, 16}}, false), QPen(within, 2.5));
        case Kind::nobodyKnows:
            painter.fillPath(triangle(), colour);
            return drawQuestionMark(painter, within);
    }
}

}  // namespace kestrav
