#include "ui/DesktopNotification.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

namespace {

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr int kShownMilliseconds = 15000;

} // namespace

bool SendDesktopNotification(const std::string& title, const std::string& text) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    return SendDesktopNotification(bus, title, text);
}

bool SendDesktopNotification(QDBusConnection& bus, const std::string& title,
                             const std::string& text) {
    if (!bus.isConnected() || !bus.interface() ||
        !bus.interface()->isServiceRegistered(kService).value())
        return false;
    QDBusMessage notify = QDBusMessage::createMethodCall(kService, "/org/freedesktop/Notifications",
                                                         kService, "Notify");
    // Notify(app_name, replaces_id, app_icon, summary, body, actions, hints, expire_timeout)
    notify << QString::fromStdString(title) << 0u << QString("vinora")
           << QString::fromStdString(title) << QString::fromStdString(text) << QStringList()
           << QVariantMap() << kShownMilliseconds;
    return bus.send(notify);
}
