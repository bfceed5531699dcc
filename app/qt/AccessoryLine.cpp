#include "app/qt/AccessoryLine.h"

#include <QLocale>
#include <QPainter>
#include <QStringList>
#include <QStyle>

#include "app/qt/discernible.h"
#include "base/shownText.h"

namespace kestrav {
namespace {

/// Names come from the device's own memory.
QString shown(const std::string& text) {
    return QString::fromStdString(shownText(text));
}

/// A stick with its plug: filled where there is one, an outline where there is none.
void drawStick(QPainter& painter, const QRectF& box, const QColor& colour, bool filled) {
    const double unit = box.height() / 8;
    const QRectF body(box.left() + unit / 2, box.top() + 2 * unit, 7 * unit, 4 * unit);
    const QRectF plug(body.right(), body.top() + unit * 0.75, 2.5 * unit, 2.5 * unit);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colour, unit * 0.8));
    painter.setBrush(filled ? QBrush(colour) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(body, unit, unit);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(plug);
}

}  // namespace

AccessoryLine::AccessoryLine(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleDescription(tr("The accessory that an update will take"));
}

void AccessoryLine::showAccessories(const std::optional<std::vector<UsbDevice>>& accessories) {
    isReady_ = accessories && !accessories->empty() && accessories->back().disk;
    QString words;
    if (!accessories) {
        words = tr("The computer doesn't tell which devices are attached.");
    } else if (accessories->empty()) {
        words = tr("Plug the accessory in.");
    } else if (accessories->size() == 1) {
        words = described(accessories->back());
    } else {
        words = tr("%1 accessories are plugged in. The update takes %2")
                    .arg(accessories->size())
                    .arg(described(accessories->back()));
    }
    setText(words);
    // Marked as rich text, so that nothing in a name is.
    setToolTip(QStringLiteral("<p>%1</p>").arg(words.toHtmlEscaped()));
    setAccessibleName(words);
    update();
}

QString AccessoryLine::described(const UsbDevice& accessory) {
    QStringList parts{shown(accessory.name)};
    parts += accessory.disk ? shown(*accessory.disk) : tr("no disk yet");
    if (accessory.diskBytes)
        parts += QLocale().formattedDataSize(static_cast<qint64>(*accessory.diskBytes), 1, QLocale::DataSizeSIFormat);
    if (!accessory.serial.empty()) parts += tr("serial number %1").arg(shown(accessory.serial));
    return parts.join(QStringLiteral(" · "));
}

int AccessoryLine::signWidth() const {
    return fontMetrics().height() * 3 / 2;
}

QSize AccessoryLine::minimumSizeHint() const {
    return {signWidth() + fontMetrics().averageCharWidth() * 20, fontMetrics().height() + 2};
}

void AccessoryLine::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const int height = fontMetrics().height();
    const int top = (rect().height() - height) / 2;
    const QRect sign = QStyle::visualRect(layoutDirection(), rect(), QRect(0, top, signWidth(), height));
    const QColor colour = palette().color(isReady_ ? QPalette::Highlight : QPalette::PlaceholderText);
    const QColor letters = palette().color(QPalette::WindowText);
    drawStick(painter, sign, discernible(colour, palette().color(QPalette::Window), letters), isReady_);
    const QRect room = QStyle::visualRect(layoutDirection(), rect(), rect().adjusted(signWidth() + 2, 0, 0, 0));
    painter.setPen(letters);
    painter.drawText(room, Qt::AlignVCenter | Qt::AlignLeading | Qt::TextSingleLine,
                     fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
}

}  // namespace kestrav
