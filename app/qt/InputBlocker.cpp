#include "app/qt/InputBlocker.h"

#include <QCursor>
#include <QEvent>
#include <QGuiApplication>

namespace kestrav {
namespace {

bool isInput(QEvent::Type type) {
    switch (type) {  // most types are not input; the ones that are have to be named
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
        case QEvent::NonClientAreaMouseButtonPress:
        case QEvent::NonClientAreaMouseButtonRelease:
        case QEvent::NonClientAreaMouseButtonDblClick:
        case QEvent::Wheel:
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
        case QEvent::Shortcut:
        case QEvent::InputMethod:
        case QEvent::ContextMenu:
        case QEvent::TouchBegin:
        case QEvent::TouchUpdate:
        case QEvent::TouchEnd:
        case QEvent::TouchCancel:
        case QEvent::TabletPress:
        case QEvent::TabletMove:
        case QEvent::TabletRelease:
        case QEvent::NativeGesture:
        case QEvent::DragEnter:
        case QEvent::DragMove:
        case QEvent::Drop:
        case QEvent::Close:
        case QEvent::Quit:
            return true;
        default:
            return false;
    }
}

}  // namespace

InputBlocker::InputBlocker(Closing closing) : closing_(closing) {
    QCoreApplication::instance()->installEventFilter(this);
    QGuiApplication::setOverrideCursor(QCursor(Qt::WaitCursor));
}

InputBlocker::~InputBlocker() {
    QGuiApplication::restoreOverrideCursor();
    QGuiApplication::sync();
}

bool InputBlocker::eventFilter(QObject* /*receiver*/, QEvent* event) {
    if (!isInput(event->type())) return false;
    const bool closes = event->type() == QEvent::Close || event->type() == QEvent::Quit;
    if (closes && closing_ == Closing::allowed) return false;
    // A close event that stays accepted closes the window, even if it was filtered out before the window got it.
    event->ignore();
    return true;
}

}  // namespace kestrav
