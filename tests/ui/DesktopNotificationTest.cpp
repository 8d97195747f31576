// Notices sent to the desktop's notification service, over a private session bus with a stand-in
// for the service.
#include "support/QtTestApp.h"
#include "support/TempHome.h"
#include "ui/DesktopNotification.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QTest>

#include <csignal>
#include <sstream>

namespace {

// A dbus-daemon of this test's own, stopped at the end.
class PrivateBus {
public:
    PrivateBus() {
        std::istringstream out(RunCommand("dbus-daemon --session --fork --print-address=1 "
                                          "--print-pid=1"));
        std::getline(out, address_);
        out >> pid_;
    }
    ~PrivateBus() {
        if (pid_ > 0) kill(pid_, SIGTERM);
    }
    QDBusConnection Connect(const char* name) const {
        return QDBusConnection::connectToBus(QString::fromStdString(address_), name);
    }

private:
    std::string address_;
    pid_t pid_ = 0;
};

// Records the Notify calls it receives.
class FakeNotifications : public QDBusVirtualObject {
public:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        calls.push_back(message);
        connection.send(message.createReply(QVariantList{1u}));
        return true;
    }
    std::vector<QDBusMessage> calls;
};

TEST(DesktopNotificationTest, NoticesReachTheNotificationService) {
    QtTestApp();
    PrivateBus daemon;
    QDBusConnection sender = daemon.Connect("sender");
    ASSERT_TRUE(sender.isConnected());
    EXPECT_FALSE(SendDesktopNotification(sender, "Vinora", "nobody listens"));

    QDBusConnection service = daemon.Connect("service");
    FakeNotifications notifications;
    ASSERT_TRUE(service.registerVirtualObject("/org/freedesktop/Notifications", &notifications));
    ASSERT_TRUE(service.registerService("org.freedesktop.Notifications"));
    EXPECT_TRUE(SendDesktopNotification(sender, "Vinora", "Your recording has been discarded"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !notifications.calls.empty(); }, 5000));
    const QDBusMessage& call = notifications.calls[0];
    EXPECT_EQ(call.member(), "Notify");
    const QVariantList arguments = call.arguments();
    ASSERT_EQ(arguments.size(), 8);
    EXPECT_EQ(arguments[3].toString(), "Vinora");
    EXPECT_EQ(arguments[4].toString(), "Your recording has been discarded");
    EXPECT_EQ(arguments[7].toInt(), 15000);
    service.unregisterObject("/org/freedesktop/Notifications");
    QDBusConnection::disconnectFromBus("service");
    QDBusConnection::disconnectFromBus("sender");
}

} // namespace
