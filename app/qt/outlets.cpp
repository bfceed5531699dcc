#include "app/qt/outlets.h"

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

std::optional<std::string> PushButtonOutlet::identifier() const {
    if (!button_ || button_->objectName().isEmpty()) return std::nullopt;
    return button_->objectName().toStdString();
}

void PushButtonOutlet::setEnabled(bool enabled) {
    if (button_) button_->setEnabled(enabled);
}

void ActivityBarOutlet::startAnimation(const Button& /*sender*/) {
    if (bar_) bar_->setVisible(true);
}

void ActivityBarOutlet::stopAnimation(const Button& /*sender*/) {
    if (bar_) bar_->setVisible(false);
}

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
