#include "app/qt/LogTextOutlet.h"

#include <QCoreApplication>
#include <QThread>

namespace kestrav {
namespace {

template <typename Action>
void onMainThread(const Action& action) {
    QCoreApplication* application = QCoreApplication::instance();
    if (QThread::currentThread() == application->thread()) {
        action();
    } else {
        QMetaObject::invokeMethod(application, action, Qt::BlockingQueuedConnection);
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
    onMainThread([&] {
        if (edit_) edit_->scrollToEnd();
    });
}

}  // namespace kestrav
