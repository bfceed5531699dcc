#include "app/qt/OneInstance.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

#include "protocol/names.h"

namespace kestrav {
namespace {

// As the Desktop Entry Specification names them, under "D-Bus Activation".
constexpr const char* kObject = "/com/corvatel/Kestrav";
constexpr const char* kInterface = "org.freedesktop.Application";
constexpr const char* kActivate = "Activate";
constexpr const char* kTokenKey = "activation-token";
// Without it, a Wayland desktop lets no program come to the front.
constexpr const char* kTokenVariable = "XDG_ACTIVATION_TOKEN";
constexpr int kPatience = 3000;  // milliseconds

bool raiseTheOther(QDBusConnection& bus) {
    QDBusMessage call = QDBusMessage::createMethodCall(kApplicationName, kObject, kInterface, kActivate);
    call << QVariantMap{{kTokenKey, qEnvironmentVariable(kTokenVariable)}};
    return bus.call(call, QDBus::Block, kPatience).type() == QDBusMessage::ReplyMessage;
}

}  // namespace

OneInstance::OneInstance() : hasRaisedAnother_(std::async(std::launch::async, [this] { return raiseAnother(); })) {}

bool OneInstance::raiseAnother() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    // Before the name: whoever finds it has to find the object, too.
    bus.registerVirtualObject(kObject, this);
    return !bus.registerService(kApplicationName) && raiseTheOther(bus);
}

OneInstance::~OneInstance() {
    hasRaisedAnother_.wait();
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterService(kApplicationName);
    bus.unregisterObject(kObject);
}

QString OneInstance::introspect(const QString& /*path*/) const {
    return QStringLiteral(R"(<interface name="org.freedesktop.Application">)"
                          R"(<method name="Activate"><arg type="a{sv}" name="platform_data" direction="in"/></method>)"
                          R"(</interface>)");
}

bool OneInstance::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    if (message.interface() != kInterface || message.member() != kActivate || message.signature() != "a{sv}") {
        return false;
    }
    connection.send(message.createReply());
    const auto data = qdbus_cast<QVariantMap>(message.arguments().constFirst());
    const QString token = data.value(kTokenKey).toString();
    if (!token.isEmpty()) qputenv(kTokenVariable, token.toUtf8());
    raise_();
    return true;
}

}  // namespace kestrav
