#include "app/qt/LogTextOutlet.h"

#include <QCoreApplication>
#include <QThread>

namespace kestrav {
namespace {

bool isMainThread() {
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

template <typename Action>
void onMainThread(const Action& action) {
    if (isMainThread()) {
        action();
    } else {
        QMetaObject::invokeMethod(QCoreApplication::instance(), action, Qt::BlockingQueuedConnection);
    }
}

}  // namespace

std::optional<std::string> LogTextOutlet::string() const {
    std::optional<std::string> text;
    onMainThread([&] {
        if (edit_) text = edit_->content();
    });
    return text;
}

bool LogTextOutlet::append(std::string_view text) {
    bool appended = false;
    onMainThread([&] {
        if (edit_) edit_->append(text);
        appended = !edit_.isNull();
    });
    return appended;
}

void LogTextOutlet::scrollToEndOfDocument() {
    // Nobody needs its end, and waiting would cost another two changes of thread a line. It comes before what the
    // thread asks for next.
    const auto scroll = [edit = edit_] {
        if (edit) edit->scrollToEnd();
    };
    if (isMainThread()) return scroll();
    QMetaObject::invokeMethod(QCoreApplication::instance(), scroll, Qt::QueuedConnection);
}

}  // namespace kestrav
