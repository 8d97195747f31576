#pragma once

#include <string>

class QDBusConnection;

// Sends a notice to the desktop's notification service (org.freedesktop.Notifications on the
// session bus), shown for 15 seconds under the program's name. This is how notices reach the
// user on desktops without a tray, GNOME's default among them. False when there is no session
// bus or no notification service on it.
bool SendDesktopNotification(const std::string& title, const std::string& text);
// The same on a given bus.
bool SendDesktopNotification(QDBusConnection& bus, const std::string& title,
                             const std::string& text);
