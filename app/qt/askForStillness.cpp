#include "app/qt/askForStillness.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QMap>
#include <QStringList>
#include <QVariantMap>
#include <utility>

namespace kestrav {
namespace {

// As the documentation of the XDG Desktop Portal names them.
constexpr const char* kPortal = "org.freedesktop.portal.Desktop";
constexpr const char* kObject = "/org/freedesktop/portal/desktop";
constexpr const char* kInterface = "org.freedesktop.portal.Settings";
constexpr const char* kReadAll = "ReadAll";
constexpr const char* kAllSettings = "a{sa{sv}}";
constexpr const char* kAppearance = "org.freedesktop.appearance";
constexpr const char* kReducedMotion = "reduced-motion";
constexpr uint kReduced = 1;
// Older than the one above, and GNOME's own.
constexpr const char* kGnome = "org.gnome.desktop.interface";
constexpr const char* kAnimations = "enable-animations";

bool wantsStillness(const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage || reply.signature() != kAllSettings) return false;
    const auto settings = qdbus_cast<QMap<QString, QVariantMap>>(reply.arguments().constFirst());
    return settings[kAppearance].value(kReducedMotion).toUInt() == kReduced ||
           !settings[kGnome].value(kAnimations, true).toBool();
}

}  // namespace

void askForStillness(QObject& asker, std::function<void()> wanted) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    QDBusMessage call = QDBusMessage::createMethodCall(kPortal, kObject, kInterface, kReadAll);
    call << QStringList{kAppearance, kGnome};
    // A desktop that has a portal has it running.
    call.setAutoStartService(false);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), &asker);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &asker,
                     [wanted = std::move(wanted)](QDBusPendingCallWatcher* answered) {
                         answered->deleteLater();
                         if (wantsStillness(answered->reply())) wanted();
                     });
}

}  // namespace kestrav
