#pragma once

#include <QApplication>

// The application object of a test that drives windows: made on first use, on the offscreen
// platform unless the environment names another. It lives until the process ends (destroying
// it after Qt's own globals are gone would crash).
inline QApplication& QtTestApp() {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "vinora-tests";
    static char* argv[] = {name, nullptr};
    static QApplication* app = new QApplication(argc, argv);
    return *app;
}
