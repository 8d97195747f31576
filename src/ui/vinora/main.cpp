// The desktop program.
#include "app/AppStartup.h"
#include "platform/ProgramInfo.h"
#include "ui/DesktopInstaller.h"
#include "ui/DesktopWindows.h"
#include "ui/MainWindow.h"
#include "ui/QtMainThreadQueue.h"
#include "ui/QtUserInteraction.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName("Brakwater Software");
    QApplication::setApplicationName("Vinora");
    QApplication::setApplicationDisplayName(kProgramName);
    QApplication::setDesktopFileName(QString::fromStdString(kDesktopId));

    const QStringList arguments = QApplication::arguments().mid(1);
    if (!arguments.isEmpty() && arguments.front() == "-installer") {
        const std::string error =
            LInstallDesktopEntry(QApplication::applicationFilePath().toStdString());
        if (!error.empty()) {
            std::fprintf(stderr, "vinora: %s\n", error.c_str());
            return 2;
        }
        std::printf("vinora: installed the desktop entry %s\n", LUserDesktopEntryPath().c_str());
        return 0;
    }

    LQtMainThreadQueue queue;
    LQtUserInteraction interaction;
    LAppStartup startup(queue, &interaction);
    startup.InstallDrives();

    LMainWindow* shown = nullptr;
    const LMainDialogWindows windows = LDesktopWindows(&shown);
    LMainWindow window{windows};
    shown = &window;
    interaction.SetParentWindow([&window] { return &window; });
    interaction.SetTrayIcon(window.TrayIcon());
    window.show();
    window.Start();
    std::vector<std::string> files;
    for (const QString& argument : arguments)
        files.push_back(argument.toStdString());
    if (!files.empty()) window.Dialog().AddFiles(files);

    return QApplication::exec();
}
