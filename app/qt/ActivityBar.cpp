#include "app/qt/ActivityBar.h"

#include <QPainter>
#include <chrono>
#include <cmath>

#include "app/qt/askForStillness.h"
#include "app/qt/discernible.h"
#include "app/qt/prefersStillness.h"

namespace kestrav {
namespace {

constexpr std::chrono::milliseconds kFrame(40);
constexpr qint64 kThereAndBack = 2400;  // milliseconds

/// How far along the way the piece is, from 0 to 1 and back, after `milliseconds`.
double placeAt(qint64 milliseconds) {
    const double part = static_cast<double>(milliseconds % kThereAndBack) / static_cast<double>(kThereAndBack);
    return 1.0 - std::abs(2.0 * part - 1.0);
}

}  // namespace

ActivityBar::ActivityBar(QWidget* parent) : QProgressBar(parent) {
    setRange(0, 0);
    setTextVisible(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    frames_.setInterval(kFrame);
    connect(&frames_, &QTimer::timeout, this, QOverload<>::of(&QWidget::update));
}

QSize ActivityBar::sizeHint() const {
    return {fontMetrics().averageCharWidth() * 10, fontMetrics().height() / 2};
}

void ActivityBar::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QRectF track = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setRenderHint(QPainter::Antialiasing);
    // Both are seen before the window and the track as well, in a theme of the highest contrast, too.
    const QColor text = palette().color(QPalette::WindowText);
    const QColor base = palette().color(QPalette::Base);
    painter.setPen(discernible(palette().color(QPalette::Mid), palette().color(QPalette::Window), text));
    painter.setBrush(base);
    painter.drawRoundedRect(track, 2, 2);
    if (isStill_) {
        painter.setBrush(QBrush(palette().color(QPalette::Highlight), Qt::BDiagPattern));
        return painter.drawRoundedRect(track, 2, 2);
    }
    const double width = track.width() / 4;
    const double left = track.left() + placeAt(running_.elapsed()) * (track.width() - width);
    painter.setPen(Qt::NoPen);
    painter.setBrush(discernible(palette().color(QPalette::Highlight), base, palette().color(QPalette::Text)));
    painter.drawRoundedRect(QRectF(left, track.top(), width, track.height()), 2, 2);
}

void ActivityBar::showEvent(QShowEvent* event) {
    QProgressBar::showEvent(event);
    running_.start();
    isStill_ = prefersStillness(*this);
    if (isStill_) return;
    frames_.start();
    askForStillness(*this, [this] { keepStill(); });
}

void ActivityBar::keepStill() {
    isStill_ = true;
    frames_.stop();
    update();
}

void ActivityBar::hideEvent(QHideEvent* event) {
    frames_.stop();
    QProgressBar::hideEvent(event);
}

}  // namespace kestrav
