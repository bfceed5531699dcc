#include "app/qt/SecondClickFilter.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPushButton>
#include <QStyleHints>

namespace kestrav {

SecondClickFilter::SecondClickFilter() {
    QCoreApplication::instance()->installEventFilter(this);
}

bool SecondClickFilter::isSecond(const QMouseEvent& press) const {
    const QStyleHints& habits = *QGuiApplication::styleHints();
    return hasFirst_ && press.timestamp() >= firstAt_ &&
           press.timestamp() - firstAt_ < static_cast<quint64>(habits.mouseDoubleClickInterval()) &&
           (press.globalPosition() - firstPlace_).manhattanLength() <= habits.mouseDoubleClickDistance();
}

bool SecondClickFilter::eventFilter(QObject* receiver, QEvent* event) {
    const bool isPress = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
    const bool isRelease = event->type() == QEvent::MouseButtonRelease;
    if ((!isPress && !isRelease) || !receiver->isWidgetType()) return false;
    if (isPress) {
        const auto& press = *static_cast<const QMouseEvent*>(event);
        isSwallowing_ = isSecond(press);
        hasFirst_ = isSwallowing_ || qobject_cast<const QPushButton*>(receiver) != nullptr;
        firstAt_ = press.timestamp();
        firstPlace_ = press.globalPosition();
    }
    if (!isSwallowing_) return false;
    // Accepted, so that it isn't offered to the parent widget either.
    event->accept();
    if (isRelease) isSwallowing_ = false;
    return true;
}

}  // namespace kestrav
