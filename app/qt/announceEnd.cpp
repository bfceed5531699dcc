#include "app/qt/announceEnd.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>
#include <QWidget>

#include "app/Report.h"
#include "protocol/names.h"

namespace kestrav {
namespace {

// As the Desktop Notifications Specification numbers them.
constexpr uchar kNormal = 1;
constexpr uchar kCritical = 2;
constexpr uint kReplacesNone = 0;
constexpr int kAsLongAsTheDesktopLikes = -1;

}  // namespace

void announceEnd(QWidget& window, const Report& report) {
    QApplication::alert(&window);
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    const bool isSuccess = report.kind == Report::Kind::success;
    const QVariantMap hints{{"urgency", QVariant::fromValue(isSuccess ? kNormal : kCritical)},
                            {"category", isSuccess ? "transfer.complete" : "transfer.error"},
                            {"desktop-entry", kApplicationName}};
    QDBusMessage call = QDBusMessage::createMethodCall(
        "org.freedesktop.Notifications", "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "Notify");
    // The headline is plain text by itself; what stands below it is markup.
    call << QStringLiteral("Kestrav") << kReplacesNone << QString(kApplicationName)
         << QCoreApplication::translate("Report", report.headline)
         << QCoreApplication::translate("Report", report.remedy).toHtmlEscaped() << QStringList() << hints
         << kAsLongAsTheDesktopLikes;
    bus.call(call, QDBus::NoBlock);
}

}  // namespace kestrav
